// The data of the page, unpacked: lines with their readings, verdicts, points of the course.
const data = JSON.parse(document.getElementById("data").textContent);
const paired = data.sides.length === 2;
const collator = new Intl.Collator("en", { numeric: true });
const verdictNames = ["slower", "faster", "same", "undecided"];

// As the lab writes a line: names and values with blanks or signs in quotes.
function quoted(word) {
  return word === "" || /[\s"\\=]/.test(word) ? `"${word.replace(/["\\]/g, "\\$&")}"` : word;
}

const lines = data.lines.map(([f, n, ...values], number) => {
  const names = data.names[n];
  const parameters = names.map((name, i) => `${quoted(name)}=${quoted(values[i])}`).join(" ");
  const name = data.functions[f];
  return {
    number, name, family: data.families[f], names, values, parameters, elements: data.elements[number],
    sides: data.sides.map(() => null), verdict: null,
    text: parameters === "" ? name : `${name} ${parameters}`,
  };
});
data.sides.forEach((side, index) => {
  for (const [line, middle, low, high, smallest, passes] of side.stats) {
    lines[line].sides[index] = { middle, low, high, smallest, passes };
  }
});
if (data.verdicts) {
  for (const [line, older, newer, ratio, low, high, passes, verdict] of data.verdicts.lines) {
    lines[line].verdict = { older, newer, ratio, low, high, passes, verdict };
  }
}
lines.sort((a, b) => collator.compare(a.family, b.family) || collator.compare(a.name, b.name) ||
  collator.compare(a.parameters, b.parameters));
const lineByNumber = new Map(lines.map((line) => [line.number, line]));

function groupBy(items, key) {
  const groups = new Map();
  for (const item of items) {
    const name = key(item);
    if (!groups.has(name)) {
      groups.set(name, []);
    }
    groups.get(name).push(item);
  }
  return groups;
}
const functions = groupBy(lines, (line) => line.name);
const families = groupBy(lines, (line) => line.family);
// Lines with figures in the last of the sides; others stand in the course only.
const current = lines.filter((line) => line.sides.some((side) => side !== null));
const judged = lines.filter((line) => line.verdict !== null);
// The readings that stand for a line: those of the new subject.
const ofNow = (line) => line.sides[line.sides.length - 1] ?? line.sides[0];
// How far the passes are apart, as a share of the middle reading; of two subjects the more restless one.
function noiseOf(line) {
  const shares = line.sides.filter((side) => side !== null).map((side) => (side.high - side.low) / side.middle);
  return shares.length > 0 ? Math.max(...shares) : null;
}

function quantile(values, share) {
  const sorted = values.filter((value) => value !== null && Number.isFinite(value)).sort((a, b) => a - b);
  if (sorted.length === 0) {
    return null;
  }
  const at = share * (sorted.length - 1);
  const below = Math.floor(at);
  const above = Math.min(below + 1, sorted.length - 1);
  return sorted[below] + (at - below) * (sorted[above] - sorted[below]);
}
const median = (values) => quantile(values, 0.5);
function geometricMean(values) {
  const sum = values.reduce((total, value) => total + Math.log(value), 0);
  return values.length === 0 ? null : Math.exp(sum / values.length);
}
const distance = (ratio) => Math.abs(Math.log(ratio));
