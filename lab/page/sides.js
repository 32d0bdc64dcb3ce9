// Two subjects side by side and as ratio: all functions, or the lines of one.
const sidesState = { name: "" };
const mostBars = 40;

// Rows of bars and ratios that stand beside each other: { text, older, newer, ratio, low, high, verdict, link }.
function sidesOfLines(members) {
  return members.map((line) => ({
    text: line.parameters || line.name, older: line.verdict.older, newer: line.verdict.newer, ratio: line.verdict.ratio,
    low: line.verdict.low, high: line.verdict.high, verdict: line.verdict.verdict, link: linkTo("course", { line: line.number }),
  }));
}
function sidesOfFunctions() {
  return [...groupBy(judged, (line) => line.name)].map(([name, members]) => {
    const ratios = members.map((line) => line.verdict.ratio);
    const verdicts = new Set(members.map((line) => line.verdict.verdict));
    return {
      text: name, older: geometricMean(members.map((line) => line.verdict.older)), newer: geometricMean(members.map((line) => line.verdict.newer)),
      ratio: geometricMean(ratios), low: Math.min(...ratios), high: Math.max(...ratios),
      verdict: verdictNames.find((verdict) => verdicts.has(verdict)), link: linkTo("sides", { name }),
    };
  });
}

function showSides(view, choice) {
  if (choice.name !== undefined) {
    sidesState.name = functions.has(choice.name) ? choice.name : "";
  }
  const name = sidesState.name;
  const all = name === "" ? sidesOfFunctions() : sidesOfLines(functions.get(name).filter((line) => line.verdict !== null));
  const rows = [...all].sort((a, b) => distance(b.ratio) - distance(a.ratio)).slice(0, mostBars);
  rows.sort((a, b) => (name === "" ? b.ratio - a.ratio : collator.compare(a.text, b.text)));
  const charts = make("div", { class: "columns" });
  view.append(
    make("h2", {}, name === "" ? "Old and new: all functions" : `Old and new: ${name}`),
    make("p", { class: "note" }, `${sidesText()}. ` + (name === ""
      ? "Bars are geometric means over the lines of a function; the whiskers reach from its smallest to its largest ratio."
      : "The whiskers are the intervals of the ratios.") + " Shaded: changes below the threshold." +
      (all.length > mostBars ? ` The ${mostBars} largest changes of ${countText(all.length)}.` : "")),
    make("div", { class: "controls" }, functionSelect(name, (value) => { location.hash = linkTo("sides", { name: value }); }, "all functions"),
      name === "" ? null : functionLink(name)),
    charts);
  if (rows.length === 0) {
    charts.append(make("p", {}, "No line in common."));
    return;
  }
  const labels = rows.map((row) => row.text);
  const go = (event, hits) => { if (hits.length > 0) { location.hash = rows[hits[0].index].link; } };
  const names = (unit) => axis("category", unit, { labels, ticks: { autoSkip: false, callback: (value) => (labels[value].length > 34 ? labels[value].slice(0, 33) + "…" : labels[value]) }, title: { display: false } });
  const height = 90 + rows.length * 26;
  drawChart(charts, {
    title: "clocks a call", height, words: `Clocks a call of old and new, ${rows.length} rows; the figures stand in the table below.`,
    config: {
      type: "bar",
      data: { labels, datasets: [0, 1].map((side) => ({
        label: sideTitle(side), data: rows.map((row) => (side === 0 ? row.older : row.newer)), backgroundColor: seriesColour(side), categoryPercentage: .8, barPercentage: .9,
        borderColor: ground.text, borderWidth: side === 0 ? 0 : 1,
      })) },
      options: {
        indexAxis: "y", onClick: go, interaction: { mode: "index", axis: "y" },
        scales: { x: axis("logarithmic", "clocks a call", { position: "top", min: 0.5 * Math.min(...rows.map((row) => Math.min(row.older, row.newer))) }), y: names("") },
        plugins: { legend: { display: true, position: "bottom" }, tooltip: { callbacks: { title: (items) => labels[items[0].dataIndex], label: (item) => `${item.dataset.label}: ${clocksText(item.raw)}` } } },
      },
    },
  });
  const { threshold } = data.verdicts;
  const bounds = rows.map((row) => (row.low === null ? null : [row.low, row.high]));
  drawChart(charts, {
    title: "ratio new / old", height, words: `Ratios of new to old with intervals, ${rows.length} rows; the figures stand in the table below.`,
    config: {
      data: { labels, datasets: [
        { type: "line", label: "ratio", data: rows.map((row) => row.ratio), showLine: false, pointRadius: 6, pointBorderWidth: 2,
          pointStyle: rows.map((row) => verdictShapes[row.verdict]), pointBackgroundColor: rows.map((row) => ground.verdict[row.verdict]), borderColor: rows.map((row) => ground.verdict[row.verdict]), pointBorderColor: rows.map((row) => ground.verdict[row.verdict]) },
        { type: "bar", label: "interval", data: bounds, backgroundColor: rows.map((row) => ground.verdict[row.verdict]), barThickness: 2, grouped: false, minBarLength: 2 },
      ] },
      options: {
        indexAxis: "y", onClick: go, interaction: { mode: "index", axis: "y" },
        scales: { x: ratioAxis("new / old", rows.flatMap((row) => [row.ratio, ...(row.low === null ? [] : [clamped(row.low, row.ratio), clamped(row.high, row.ratio)])]), { position: "top" }), y: names("") },
        plugins: { tooltip: { filter: (item) => item.dataset.label === "ratio", callbacks: { title: (items) => (items.length > 0 ? labels[items[0].dataIndex] : ""), label: (item) => {
          const row = rows[item.dataIndex];
          return `${changeText(row.ratio)} (${row.low === null ? "?" : `${changeText(row.low)} .. ${changeText(row.high)}`}), ${row.verdict}`;
        } } } },
      },
      plugins: [zone("x", 1 / (1 + threshold), 1 + threshold)],
    },
  });
  view.append(make("h3", {}, "Figures"), tableOf([
    { title: name === "" ? "function" : "parameters", mark: () => "name", cell: (row) => make("a", { href: row.link }, row.text) },
    { title: "old", number: true, cell: (row) => clocksText(row.older) },
    { title: "new", number: true, cell: (row) => clocksText(row.newer) },
    { title: "change", number: true, mark: (row) => row.verdict, cell: (row) => changeText(row.ratio) },
    { title: name === "" ? "smallest .. largest" : "interval", number: true, cell: (row) => (row.low === null ? "?" : `${changeText(row.low).slice(0, -2)} .. ${changeText(row.high)}`) },
    { title: "verdict", mark: (row) => row.verdict, cell: (row) => `${verdictMark[row.verdict]} ${row.verdict}` },
  ], rows));
}
// An interval of hundreds of percent would leave no room for the others.
const clamped = (bound, ratio) => Math.min(Math.max(bound, Math.min(ratio, 1) / 2), Math.max(ratio, 1) * 2);
