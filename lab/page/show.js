// How things are written and built: numbers, elements, links between the views, the theme.

// Formats are made once: each costs more than thousands of uses.
const fixedFormats = [0, 1, 2, 3].map((digits) => new Intl.NumberFormat("en", { minimumFractionDigits: digits, maximumFractionDigits: digits }));
const plainFormat = new Intl.NumberFormat("en", { maximumFractionDigits: 6 });

// Four digits that count, whole from 1000 on.
function clocksText(value) {
  if (value === null || value === undefined) {
    return "";
  }
  const decimals = value >= 1000 ? 0 : value >= 100 ? 1 : value >= 10 ? 2 : 3;
  return fixedFormats[decimals].format(value);
}
const countText = (value) => fixedFormats[0].format(value);
const plainNumber = (value) => plainFormat.format(Number(value.toPrecision(6)));
function changeText(ratio) {
  if (ratio === null || ratio === undefined) {
    return "?";
  }
  const change = (ratio - 1) * 100;
  const digits = Math.abs(change).toFixed(1);
  // A hard blank: the sign is not torn off.
  return (Number(digits) === 0 ? "" : change < 0 ? "−" : "+") + digits + "\u00a0%";
}
const shareText = (share) => (share === null ? "" : (share * 100).toFixed(1) + "\u00a0%");
const verdictMark = { slower: "▲", faster: "▼", same: "=", undecided: "?" };
const plural = (count, word) => `${countText(count)} ${word}${count === 1 ? "" : word.endsWith("s") ? "es" : "s"}`;

// An element with attributes (onclick and the like as functions) and children; text is never read as HTML.
function make(tag, attributes = {}, ...children) {
  const element = document.createElement(tag);
  for (const [name, value] of Object.entries(attributes)) {
    if (typeof value === "function") {
      element.addEventListener(name.slice(2), value);
    } else if (value === true) {
      element.setAttribute(name, "");
    } else if (value !== false && value !== null && value !== undefined) {
      element.setAttribute(name, value);
    }
  }
  element.append(...children.flat().filter((child) => child !== null && child !== undefined));
  return element;
}

// "#function?name=veksX_16s": the view and what it is to show.
function linkTo(view, choice = {}) {
  const query = new URLSearchParams(choice).toString();
  return `#${view}${query === "" ? "" : "?" + query}`;
}
const functionLink = (name) => make("a", { href: linkTo("function", { name }) }, name);
const courseLink = (line, text) => make("a", { href: linkTo("course", { line: line.number }) }, text);

// A table: columns are { title, number (right-aligned), cell(row) -> text or element, mark(row) -> class }.
function tableOf(columns, rows, caption) {
  return make("div", { class: "scroll" }, make("table", {},
    caption ? make("caption", { class: "note" }, caption) : null,
    make("thead", {}, make("tr", {}, columns.map((column) =>
      make("th", { scope: "col", class: column.number ? "n" : null }, column.title)))),
    make("tbody", {}, rows.map((row) => make("tr", {}, columns.map((column) => make("td", {
      class: [column.number ? "n" : "", column.mark ? column.mark(row) : ""].join(" ").trim() || null,
    }, column.cell(row) ?? "")))))));
}

function selectOf(label, options, chosen, changed, attributes = {}) {
  const select = make("select", { ...attributes, onchange: () => changed(select.value) },
    options.map((option) => make("option", { value: option.value, selected: option.value === chosen }, option.text)));
  return make("label", {}, label, select);
}
// All functions with their families as groups.
function functionSelect(chosen, changed, first = null) {
  const groups = [...families].map(([family, members]) => make("optgroup", { label: family },
    [...new Set(members.map((line) => line.name))].map((name) =>
      make("option", { value: name, selected: name === chosen }, name))));
  const select = make("select", { onchange: () => changed(select.value) },
    first === null ? null : make("option", { value: "", selected: chosen === "" }, first), groups);
  return make("label", {}, "Function", select);
}
function checkOf(label, checked, changed, attributes = {}) {
  const box = make("input", { type: "checkbox", checked, ...attributes, onchange: () => changed(box.checked) });
  return make("label", {}, box, label);
}

// A label tells no more where both sides bear it.
function sideName(index) {
  const { name, label } = data.sides[index];
  const told = label !== "" && label !== name && data.sides.every((side, other) => other === index || side.label !== label);
  return told ? `${name} (${label})` : name;
}
// In charts and headings: which of the two it is stands before the name, unless it is the name.
function sideTitle(index) {
  const place = ["old", "new"][index];
  return paired && sideName(index) !== place ? `${place}: ${sideName(index)}` : sideName(index);
}
const sidesText = () => `${sideTitle(0)}, ${sideTitle(1)}`;
const intervalText = (line) =>
  line.verdict.low === null ? "?" : `${changeText(line.verdict.low).slice(0, -2)} .. ${changeText(line.verdict.high)}`;

// Okabe and Ito's colours; on each ground those that stand out from it.
const grounds = {
  light: {
    text: "#16191d", faint: "#555c66", grid: "#dfe3e8", page: "#f6f7f9",
    series: ["#0072b2", "#d55e00", "#009e73", "#cc79a7", "#e69f00", "#56b4e9", "#000000"],
    verdict: { slower: "#d55e00", faster: "#0072b2", same: "#8b929c", undecided: "#e69f00" },
    zone: "rgba(0, 158, 115, .13)", band: ".2",
  },
  dark: {
    text: "#e8eaed", faint: "#a8b0bb", grid: "#333a43", page: "#1d2127",
    series: ["#56b4e9", "#e69f00", "#00b587", "#e39cc3", "#f0e442", "#e8713a", "#ffffff"],
    verdict: { slower: "#f0813f", faster: "#56b4e9", same: "#8b929c", undecided: "#f0e442" },
    zone: "rgba(0, 181, 135, .2)", band: ".28",
  },
};
let ground = grounds.light;
function faded(colour, opacity) {
  const part = (at) => parseInt(colour.slice(at, at + 2), 16);
  return `rgba(${part(1)}, ${part(3)}, ${part(5)}, ${opacity})`;
}
const seriesColour = (index) => ground.series[index % ground.series.length];
const dashes = [[], [7, 4], [2, 3], [9, 3, 2, 3]];
const shapes = ["circle", "rect", "triangle", "rectRot", "star", "crossRot"];
const verdictShapes = { slower: "triangle", faster: "rectRot", same: "circle", undecided: "crossRot" };
