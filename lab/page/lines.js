// The table of all lines: search, filters, sorting. Rows are made once and then hidden or moved.
const lineColumns = [
  { key: "name", title: "function", value: null },
  { key: "parameters", title: "parameters", text: true, value: (line) => line.parameters },
  ...(paired ? [
    { key: "old", title: "old", value: (line) => (line.verdict ? line.verdict.older : line.sides[0]?.middle), show: clocksText },
    { key: "new", title: "new", value: (line) => (line.verdict ? line.verdict.newer : line.sides[1]?.middle), show: clocksText },
    { key: "change", title: "change", value: (line) => line.verdict?.ratio, show: changeText, falls: true },
    { key: "interval", title: "interval", value: (line) => line.verdict?.low, cell: (line) => (line.verdict ? intervalText(line) : "") },
    { key: "verdict", title: "verdict", text: true, value: (line) => verdictRank(line),
      cell: (line) => (line.verdict ? `${verdictMark[line.verdict.verdict]} ${line.verdict.verdict}` : "") },
  ] : [
    { key: "clocks", title: "clocks a call", value: (line) => ofNow(line).middle, show: clocksText },
    { key: "element", title: "per element", value: (line) => (line.elements ? ofNow(line).middle / line.elements : null), show: clocksText },
    { key: "smallest", title: "smallest", value: (line) => ofNow(line).smallest, show: clocksText },
  ]),
  { key: "noise", title: "band", value: noiseOf, show: shareText, falls: true },
  { key: "passes", title: "passes", value: (line) => (line.verdict ? line.verdict.passes : ofNow(line).passes), show: countText },
];
const verdictRank = (line) => (line.verdict ? String(verdictNames.indexOf(line.verdict.verdict)) : "9");

const escapes = { "&": "&amp;", "<": "&lt;", ">": "&gt;", '"': "&quot;" };
const escaped = (text) => String(text).replace(/[&<>"]/g, (sign) => escapes[sign]);

// As text: for thousands of rows much quicker than element by element.
function rowText(line) {
  const cells = lineColumns.map((column) => {
    if (column.key === "name") {
      return `<td class="name"><a href="${escaped(linkTo("function", { name: line.name }))}">${escaped(line.name)}</a></td>`;
    }
    const value = column.value(line);
    const text = column.cell ? column.cell(line) : column.text ? value : value === null || value === undefined ? "" : column.show(value);
    const mark = column.key === "verdict" || column.key === "change" ? line.verdict?.verdict ?? "" : "";
    const kind = column.key === "parameters" ? "name" : column.text ? mark : `n ${mark}`;
    return `<td class="${kind}">${escaped(text)}</td>`;
  });
  return `<tr data-line="${line.number}">${cells.join("")}</tr>`;
}

const linesState = { sort: "name", falling: false };

function showLines(view, choice) {
  const wanted = new Set(choice.verdict ? [choice.verdict] : verdictNames);
  const search = make("input", { type: "search", id: "search", placeholder: "words of function, parameters", "aria-label": "Search", value: choice.search ?? "" });
  const family = selectOf("Family", [{ value: "", text: "all" }, ...[...families].map(([name, members]) => ({ value: name, text: `${name} (${members.length})` }))],
    choice.family ?? "", () => filter(), { id: "family" });
  const found = make("p", { id: "found", class: "note", role: "status" });
  const headings = lineColumns.map((column) => make("th", { scope: "col", class: column.key === "name" || column.text ? null : "n", "data-key": column.key },
    make("button", { type: "button", onclick: () => sortBy(column) }, column.title)));
  const body = make("tbody");
  const table = make("table", { id: "lines-table" }, make("caption", { hidden: true }, "All lines"), make("thead", {}, make("tr", {}, headings)), body);
  body.innerHTML = current.map(rowText).join("");
  const rows = new Map([...body.children].map((row) => [Number(row.dataset.line), row]));
  const words = new Map(current.map((line) => [line.number, `${line.family} ${line.text}`.toLowerCase()]));
  const groups = new Map([...groupBy(current, (line) => line.family)].map(([name, members]) => [name,
    make("tr", { class: "group" }, make("th", { colspan: lineColumns.length, scope: "colgroup" }, `${name}, ${plural(members.length, "line")}`))]));

  function filter() {
    const parts = search.value.toLowerCase().split(/\s+/).filter((part) => part !== "");
    const only = family.querySelector("select").value;
    const open = new Set();
    let shown = 0;
    for (const line of current) {
      const text = words.get(line.number);
      const visible = (only === "" || line.family === only) && parts.every((part) => text.includes(part)) &&
        (!paired || line.verdict === null || wanted.has(line.verdict.verdict));
      rows.get(line.number).hidden = !visible;
      if (visible) {
        ++shown;
        open.add(line.family);
      }
    }
    for (const [name, row] of groups) {
      row.hidden = !open.has(name);
    }
    found.textContent = `${countText(shown)} of ${plural(current.length, "line")}`;
  }

  function arrange() {
    const column = lineColumns.find((one) => one.key === linesState.sort) ?? lineColumns[0];
    const sign = linesState.falling ? -1 : 1;
    const sorted = [...current];
    if (column.key !== "name") {
      const values = new Map(current.map((line) => [line, column.value(line)]));
      sorted.sort((a, b) => {
        const [x, y] = [values.get(a), values.get(b)];
        const [noX, noY] = [x === null || x === undefined, y === null || y === undefined];
        // What has no figure stands at the end either way.
        return noX || noY ? noX - noY : sign * (column.text ? collator.compare(x, y) : x - y);
      });
    } else if (linesState.falling) {
      sorted.reverse();
    }
    const all = [];
    let last = null;
    for (const line of sorted) {
      if (column.key === "name" && line.family !== last) {
        last = line.family;
        all.push(groups.get(last));
      }
      all.push(rows.get(line.number));
    }
    body.replaceChildren(...all);
    for (const heading of headings) {
      const active = heading.dataset.key === column.key;
      heading.setAttribute("aria-sort", !active ? "none" : linesState.falling ? "descending" : "ascending");
      heading.firstChild.textContent = lineColumns.find((one) => one.key === heading.dataset.key).title + (active ? (linesState.falling ? " ↓" : " ↑") : "");
    }
  }
  function sortBy(column) {
    linesState.falling = linesState.sort === column.key ? !linesState.falling : column.falls === true;
    linesState.sort = column.key;
    arrange();
  }

  search.addEventListener("input", filter);
  view.append(
    make("h2", {}, "All lines"),
    make("div", { class: "controls" }, search, family, paired ? make("fieldset", { id: "verdicts" }, make("legend", {}, "Verdict"),
      verdictNames.map((verdict) => checkOf(`${verdictMark[verdict]} ${verdict}`, wanted.has(verdict), (on) => {
        (on ? (name) => wanted.add(name) : (name) => wanted.delete(name))(verdict);
        filter();
      }, { value: verdict }))) : null),
    found,
    make("div", { class: "scroll" }, table),
    make("p", { class: "note" }, "Clocks are those of a call. The band holds the passes' readings: all of them, or the middle " +
      "80 % of ten and more; of a single pass it is the accuracy that the rig told."));
  arrange();
  filter();
}
