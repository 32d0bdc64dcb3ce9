// A fleet: the verdicts on each kind of machine side by side; first the lines that do not fare alike everywhere.
function kindsOfLines() {
  const found = new Map();
  data.kinds.forEach((kind, index) => {
    for (const [line, older, newer, ratio, low, high, passes, verdict] of kind.lines) {
      if (!found.has(line)) {
        found.set(line, data.kinds.map(() => null));
      }
      found.get(line)[index] = { older, newer, ratio, low, high, passes, verdict };
    }
  });
  return [...found].map(([number, verdicts]) => {
    const told = verdicts.filter((verdict) => verdict !== null);
    const ratios = told.map((verdict) => Math.log(verdict.ratio));
    const count = (name) => told.filter((verdict) => verdict.verdict === name).length;
    const changed = count("slower") + count("faster");
    return {
      line: lineByNumber.get(number), verdicts, changed,
      apart: changed > 0 && Math.max(count("slower"), count("faster")) < told.length,
      spread: Math.max(...ratios) - Math.min(...ratios), far: Math.max(...ratios.map(Math.abs)),
    };
  });
}

function showMachines(view) {
  const all = kindsOfLines();
  const cellOf = (verdict) => (verdict === null ? "" : `${verdictMark[verdict.verdict]} ${changeText(verdict.ratio)}`);
  const titleOf = (verdict) => (verdict === null ? null : `${verdict.verdict}, ${intervalText({ verdict })}, ${plural(verdict.passes, "round")}`);
  const columns = [
    { title: "line", mark: () => "name", cell: (entry) => make("span", {}, functionLink(entry.line.name), " ", entry.line.parameters) },
    ...data.kinds.map((kind, index) => ({
      title: kind.name, number: true, mark: (entry) => entry.verdicts[index]?.verdict ?? "",
      cell: (entry) => make("span", { title: titleOf(entry.verdicts[index]) }, cellOf(entry.verdicts[index])),
    })),
    { title: "over all", number: true, mark: (entry) => entry.line.verdict?.verdict ?? "", cell: (entry) => cellOf(entry.line.verdict) },
  ];
  const section = (title, id, entries, most) => (entries.length === 0 ? null : make("div", { id },
    make("h3", {}, `${title} (${countText(entries.length)})`), tableOf(columns, entries.slice(0, most)),
    entries.length > most ? make("p", { class: "note" }, `and ${countText(entries.length - most)} more`) : null));
  const apart = all.filter((entry) => entry.apart).sort((a, b) => b.spread - a.spread);
  const everywhere = all.filter((entry) => entry.changed > 0 && !entry.apart).sort((a, b) => b.far - a.far);
  const rest = all.filter((entry) => entry.changed === 0).sort((a, b) => b.spread - a.spread);
  const count = (kind, verdict) => countText(kind.lines.filter((line) => line[7] === verdict).length);
  view.append(...[
    make("h2", {}, "Machines"),
    tableOf([
      { title: "machine", cell: (kind) => kind.name },
      { title: "hosts", number: true, cell: (kind) => make("span", { title: kind.hosts.join(", ") }, countText(kind.hosts.length)) },
      { title: "rounds", number: true, cell: (kind) => countText(kind.rounds) },
      ...verdictNames.map((verdict) => ({ title: verdict, number: true, cell: (kind) => count(kind, verdict) })),
      { title: "change", number: true, cell: (kind) => changeText(geometricMean(kind.lines.map((line) => line[3]))) },
    ], data.kinds),
    section("Changed on some kinds of machines only", "machines-apart", apart, 500),
    section("Changed alike on all of them", "machines-alike", everywhere, 500),
    section("Unchanged, those that differ most first", "machines-rest", rest, 20),
  ].filter((part) => part !== null));
}
