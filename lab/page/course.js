// The course over time: a line, or what moved all lines alike, at each point; machines apart; steps.
const courseState = { line: null, steady: false };

// A label, or the subject's name, where it tells points apart.
const pointName = ["label", "subject"].map((key) => (new Set(data.points.map((point) => point[key])).size > 1 ? (point) => point[key] : null))
  .find((name) => name !== null) ?? (() => "");
function pointTime(point) {
  return point.time === null ? point.started : new Date(point.time * 1000).toLocaleString("sv-SE", { dateStyle: "short", timeStyle: "short" });
}

function startLine() {
  if (data.steps.length > 0) {
    return data.steps.reduce((best, step) => (distance(step[2]) > distance(best[2]) ? step : best))[0];
  }
  const name = startFunction();
  return functions.get(name).reduce((best, line) => ((line.verdict ? distance(line.verdict.ratio) : 0) > (best.verdict ? distance(best.verdict.ratio) : 0) ? line : best)).number;
}

// The points of one machine and side of the line's course, with the levels between its steps.
function courseSets(line, steps) {
  const values = line === null ? data.points.map((point) => point.level) : (data.values[line.number] ?? []);
  const steady = line !== null && courseState.steady;
  const value = (i) => (values[i] === null || values[i] === undefined ? null : steady ? values[i] / data.points[i].level : values[i]);
  const datasets = [];
  const kinds = groupBy(data.points.map((point, i) => ({ point, i })), ({ point }) => `${point.machine} ${point.side}`);
  for (const members of kinds.values()) {
    const { machine, side } = members[0].point;
    const index = datasets.length;
    datasets.push({
      label: [paired && side >= 0 ? sideTitle(side) : "", data.machines.length > 1 ? data.machines[machine] : ""].filter((text) => text !== "").join(", ") || "readings",
      data: members.map(({ i }) => ({ x: i, y: value(i), point: data.points[i] })).filter((point) => point.y !== null),
      borderColor: seriesColour(index), backgroundColor: seriesColour(index), pointStyle: shapes[index % shapes.length],
      pointRadius: data.points.length > 150 ? 2 : 3.5, borderWidth: 1.2, borderDash: [2, 3], showLine: true,
    });
  }
  if (steps.length > 0) {
    const ends = [0, ...steps.map(([, point]) => point), data.points.length];
    for (let i = 0; i + 1 < ends.length; ++i) {
      const level = median(Array.from({ length: ends[i + 1] - ends[i] }, (unused, k) => value(ends[i] + k)));
      datasets.push({ label: "level", bound: true, data: [{ x: ends[i] - .4, y: level }, { x: ends[i + 1] - .6, y: level }], borderColor: ground.text, borderWidth: 2, pointRadius: 0, pointHitRadius: 0, showLine: true });
    }
  }
  return datasets;
}

function courseChart(place, line, steps, title) {
  const all = courseSets(line, steps);
  const unit = line === null ? "all lines, relative" : "clocks a call";
  const values = all.flatMap((set) => set.data.map((point) => point.y));
  drawChart(place, {
    title, height: 360, words: `${title}: ${plural(data.points.length, "point")}` + (steps.length > 0 ? `, ${plural(steps.length, "step")}` : "") + "; the points stand in the table below.",
    config: {
      type: "line", data: { datasets: all },
      options: {
        interaction: { mode: "nearest", intersect: false, axis: "xy" },
        scales: {
          x: axis("linear", "", { min: -0.5, max: data.points.length - 0.5, title: { display: false }, ticks: { precision: 0, maxRotation: 0, autoSkipPadding: 18, callback: (at) => {
            const point = data.points[at];
            return point ? [pointName(point).slice(0, 16), pointTime(point).slice(5)] : "";
          } } }),
          y: line === null ? ratioAxis(unit, values) : axis("linear", unit, { grace: "15%", ticks: { callback: (value) => plainNumber(value) } }),
        },
        plugins: {
          legend: { display: all.filter((set) => !set.bound).length > 1, position: "bottom" },
          tooltip: { callbacks: {
            title: (items) => (items.length > 0 ? `${pointName(items[0].raw.point)} ${pointTime(items[0].raw.point)}` : ""),
            label: (item) => (line === null ? changeText(item.raw.y) : `${clocksText(item.raw.y)} clocks`) + ` (${plural(item.raw.point.passes, "pass")}, load ${item.raw.point.load})`,
          } },
        },
      },
      plugins: [rules(steps.map(([, point, factor]) => ({ at: point - 0.5, text: changeText(factor) })))],
    },
  });
}

function showCourse(view, choice) {
  if (choice.line !== undefined && lineByNumber.has(Number(choice.line))) {
    courseState.line = Number(choice.line);
  }
  courseState.line ??= startLine();
  const line = lineByNumber.get(courseState.line);
  const steps = data.steps.filter(([number]) => number === line.number).sort((a, b) => a[1] - b[1]);
  const charts = make("div", {});
  const again = (number) => { location.hash = linkTo("course", { line: number }); };
  const values = data.values[line.number] ?? [];
  view.append(
    make("h2", {}, "Course over time"),
    make("p", { class: "note" }, `${plural(data.points.length, "point")}` +
      (data.merged > 1 ? `, each the median of up to ${data.merged} passes` : ", a pass each") +
      (data.left_out > 0 ? `; ${plural(data.left_out, "older point")} left out` : "") +
      (data.machines.length > 1 ? `; ${data.machines.length} machines, each by itself` : "") + "."),
    make("div", { class: "controls" },
      functionSelect(line.name, (name) => again(functions.get(name)[0].number)),
      selectOf("Line", functions.get(line.name).map((one) => ({ value: String(one.number), text: one.parameters || "without parameters" })), String(line.number), again),
      checkOf("without what moved all lines alike", courseState.steady, (on) => { courseState.steady = on; showView("course", {}); })),
    charts);
  courseChart(charts, line, steps, line.text);
  const all = make("div", { style: "margin-top: 1.1rem" });
  view.append(all);
  courseChart(all, null, [], "What moved all lines alike: the median of how far the lines are from their usual readings");
  if (data.steps.length > 0) {
    const sorted = [...data.steps].sort((a, b) => distance(b[2]) - distance(a[2]));
    view.append(make("h3", {}, `Steps (${countText(sorted.length)})`), tableOf([
      { title: "factor", number: true, mark: ([, , factor]) => (factor > 1 ? "slower" : "faster"), cell: ([, , factor]) => changeText(factor) },
      { title: "first point behind it", cell: ([, at]) => `${pointName(data.points[at])} ${pointTime(data.points[at])}` },
      { title: "line", mark: () => "name", cell: ([number]) => courseLink(lineByNumber.get(number), lineByNumber.get(number).text) },
    ], sorted.slice(0, 100)), sorted.length > 100 ? make("p", {}, `and ${countText(sorted.length - 100)} more`) : "");
  }
  view.append(make("h3", {}, "Points"), tableOf([
    { title: "time", cell: ({ point }) => pointTime(point) },
    { title: "label", cell: ({ point }) => point.label },
    { title: "subject", mark: () => "name", cell: ({ point }) => point.subject },
    { title: "passes", number: true, cell: ({ point }) => countText(point.passes) },
    { title: "clocks a call", number: true, cell: ({ i }) => clocksText(values[i]) },
    { title: "all lines", number: true, cell: ({ point }) => changeText(point.level) },
    { title: "load", number: true, cell: ({ point }) => point.load },
    { title: "", cell: ({ point }) => (point.complete ? "" : "not run to the end") },
  ], data.points.map((point, i) => ({ point, i }))));
}
