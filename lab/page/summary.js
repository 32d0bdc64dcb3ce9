// Summary: what was found, in a screen.
function tile(value, text, mark = null) {
  return make("div", { class: "tile" }, make("b", { class: mark }, value), make("span", {}, text));
}

function changeTable(title, list, most = 12) {
  if (list.length === 0) {
    return null;
  }
  const sorted = [...list].sort((a, b) => distance(b.verdict.ratio) - distance(a.verdict.ratio));
  return make("div", {}, make("h3", {}, `${title} (${countText(list.length)})`), tableOf([
    { title: "change", number: true, mark: (line) => line.verdict.verdict, cell: (line) => changeText(line.verdict.ratio) },
    { title: "interval", number: true, cell: intervalText },
    { title: "old", number: true, cell: (line) => clocksText(line.verdict.older) },
    { title: "new", number: true, cell: (line) => clocksText(line.verdict.newer) },
    { title: "line", mark: () => "name", cell: (line) => make("span", {}, functionLink(line.name), " ", line.parameters) },
  ], sorted.slice(0, most)), list.length > most
    ? make("p", {}, make("a", { href: linkTo("lines", { verdict: list[0].verdict.verdict }) }, `all ${countText(list.length)}`))
    : null);
}
function missingTable(title, numbers) {
  if (numbers.length === 0) {
    return null;
  }
  return make("div", {}, make("h3", {}, `${title} (${countText(numbers.length)})`), tableOf([
    { title: "line", cell: (number) => lineByNumber.get(number).text },
  ], numbers.slice(0, 20)), numbers.length > 20 ? make("p", {}, `and ${countText(numbers.length - 20)} more`) : null);
}

function showSummary(view) {
  const passes = data.sides.map((side) => countText(side.passes)).join(" / ");
  const tiles = [
    tile(countText(current.length), "lines"),
    tile(countText(new Set(current.map((line) => line.name)).size), "functions"),
    tile(countText(new Set(current.map((line) => line.family)).size), "families"),
    tile(passes, paired ? "passes, old / new" : "passes"),
  ];
  const parts = [];
  if (paired) {
    const count = (verdict) => judged.filter((line) => line.verdict.verdict === verdict);
    for (const verdict of verdictNames) {
      tiles.push(tile(`${verdictMark[verdict]} ${countText(count(verdict).length)}`, verdict, verdict));
    }
    const { threshold, confidence, common } = data.verdicts;
    tiles.push(tile(changeText(data.verdicts.geometric_mean), "geometric mean of all ratios new / old"));
    parts.push(
      make("p", { class: "note" }, `Threshold ${plainNumber(threshold * 100)} %, confidence ${plainNumber(confidence * 100)} % ` +
        "that no line is accused wrongly. " + (common.removed
        ? `What moved all lines alike, ${changeText(common.ratio)}, may be the machine's drift and was taken out.` : "")),
      changeTable("Slower", count("slower")),
      changeTable("Faster", count("faster")),
      changeTable("Undecided, the largest estimates", count("undecided"), 6),
      missingTable("Only in the old one", data.verdicts.only_old),
      missingTable("Only in the new one", data.verdicts.only_new));
  } else {
    const noises = current.map(noiseOf);
    tiles.push(tile(shareText(median(noises)), data.sides[0].passes > 1
      ? "between the passes of a line (median)" : "the rig's own accuracy (median)"));
    const restless = [...current].filter((line) => noiseOf(line) > 0).sort((a, b) => noiseOf(b) - noiseOf(a)).slice(0, 12);
    parts.push(restless.length === 0 ? null : make("div", {}, make("h3", {}, "The most restless lines"), tableOf([
      { title: "band", number: true, cell: (line) => shareText(noiseOf(line)) },
      { title: "clocks a call", number: true, cell: (line) => clocksText(ofNow(line).middle) },
      { title: "line", mark: () => "name", cell: (line) => make("span", {}, functionLink(line.name), " ", line.parameters) },
    ], restless)));
  }
  if (data.steps.length > 0) {
    tiles.push(tile(countText(data.steps.length), "steps in the courses"));
  }
  const broken = data.points.filter((point) => !point.complete).length;
  view.append(
    make("h2", {}, "Summary"),
    broken === 0 ? "" : make("p", { class: "warning" }, `${plural(broken, "pass")} did not run to the end.`),
    paired && data.verdicts.incomplete ? make("p", { class: "warning" }, "Lines that should have been measured are missing.") : "",
    make("div", { class: "tiles" }, tiles),
    data.remarks.length === 0 ? "" : make("ul", { class: "remarks" }, data.remarks.map((remark) => make("li", {}, remark))),
    ...parts.filter((part) => part !== null));
}
