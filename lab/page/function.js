// A function: its clocks against each parameter, with the band of the passes.
const functionState = { name: null, held: {}, perElement: false };

const isNumber = (text) => text !== "" && Number.isFinite(Number(text));
const isLength = (name) => /len|size|order|num/i.test(name);

// How a parameter is laid on the axis: lengths and sizes that are all positive on a logarithmic one, other numbers on a
// linear one, words side by side.
function axisKind(name, values) {
  if (!values.every(isNumber)) {
    return "category";
  }
  const numbers = values.map(Number);
  return isLength(name) && Math.min(...numbers) > 0 && Math.max(...numbers) > Math.min(...numbers) ? "logarithmic" : "linear";
}

function valuesOf(members, name) {
  return [...new Set(members.map((line) => valueOf(line, name)).filter((value) => value !== undefined))].sort(collator.compare);
}
const valueOf = (line, name) => line.values[line.names.indexOf(name)];

// Few values stand at the axis themselves; a little room is left at both ends.
function parameterAxis(kind, name, values) {
  if (kind === "category") {
    return axis(kind, name, { offset: true });
  }
  const numbers = values.map(Number).sort((a, b) => a - b);
  const [low, high] = [numbers[0], numbers[numbers.length - 1]];
  const ends = kind === "logarithmic" ? [low / (high / low) ** 0.05, high * (high / low) ** 0.05] : [low - (high - low) * 0.05, high + (high - low) * 0.05];
  return axis(kind, name, {
    min: ends[0], max: ends[1],
    ...(numbers.length > 12 ? {} : { afterBuildTicks: (scale) => { scale.ticks = numbers.map((value) => ({ value })); }, ticks: { callback: (value) => plainNumber(value), maxRotation: 0 } }),
  });
}

function parameterChart(place, members, name) {
  const values = valuesOf(members, name);
  const kind = axisKind(name, values);
  const others = (line) => line.names.map((other, i) => (other === name ? null : `${quoted(other)}=${quoted(line.values[i])}`))
    .filter((text) => text !== null).join(" ");
  const scale = (line) => (functionState.perElement && line.elements ? line.elements : 1);
  const series = groupBy(members.filter((line) => valueOf(line, name) !== undefined), others);
  const few = series.size * data.sides.length <= 10;
  const datasets = [];
  let index = 0;
  // Few courses: one colour for both subjects, which differ by dash and shape. Many: a colour for each subject.
  for (const [rest, own] of series) {
    data.sides.forEach((side, number) => {
      const points = own.filter((line) => line.sides[number] !== null).map((line) => {
        const { middle, low, high, passes } = line.sides[number];
        const x = kind === "category" ? valueOf(line, name) : Number(valueOf(line, name));
        return { x, middle: middle / scale(line), low: low / scale(line), high: high / scale(line), passes, line };
      }).sort((a, b) => (kind === "category" ? collator.compare(a.x, b.x) : a.x - b.x));
      const label = [paired ? ["old", "new"][number] : "", rest].filter((text) => text !== "").join(", ") || name;
      datasets.push(...bandSets(points, {
        label, colour: seriesColour(paired && !few ? number : index), index: paired ? number : Math.floor(index / ground.series.length),
      }));
    });
    ++index;
  }
  const unit = functionState.perElement ? "clocks an element" : "clocks a call";
  drawChart(place, {
    title: `${unit} against ${name}`,
    words: `${functionState.name}: ${unit} against ${name}, ${plural(values.length, "value")} from ${values[0]} to ${values[values.length - 1]}, ` +
      `${plural(series.size, "course")}; the figures stand in the table below.`,
    note: few ? null : `${series.size} combinations of the other parameters; point at a line, or hold parameters above.`,
    config: {
      type: "line", data: { datasets, ...(kind === "category" ? { labels: values } : {}) },
      options: {
        onClick: (event, hits) => {
          if (hits.length > 0) {
            const line = datasets[hits[0].datasetIndex].data[hits[0].index].line;
            if (line) {
              location.hash = linkTo("course", { line: line.number });
            }
          }
        },
        scales: { x: parameterAxis(kind, name, values), y: axis("logarithmic", unit, { grace: "10%" }) },
        plugins: {
          legend: { display: few && datasets.length > 3, position: "bottom" },
          tooltip: { callbacks: {
            title: (items) => (items.length > 0 ? `${name}=${items[0].raw.x}` : ""),
            label: (item) => `${item.dataset.label}: ${clocksText(item.raw.middle)} (${clocksText(item.raw.low)} .. ${clocksText(item.raw.high)}, ${plural(item.raw.passes, "pass")})`,
          } },
        },
      },
    },
  });
}

function showFunction(view, choice) {
  const name = functions.has(choice.name) ? choice.name : functionState.name ?? startFunction();
  if (name !== functionState.name) {
    functionState.held = {};
  }
  functionState.name = name;
  const all = functions.get(name).filter((line) => ofNow(line) !== null);
  const names = [...new Set(all.flatMap((line) => line.names))];
  const moving = names.filter((one) => valuesOf(all, one).length > 1);
  const members = all.filter((line) => Object.entries(functionState.held).every(([key, value]) => value === "" || valueOf(line, key) === value));
  const again = () => showView("function", { name });
  const shown = moving.filter((one) => valuesOf(members, one).length > 1).sort((a, b) => isLength(b) - isLength(a));
  const charts = make("div", { class: "columns" });
  view.append(
    make("h2", {}, name),
    make("p", { class: "note" }, `Family ${all[0]?.family ?? functions.get(name)[0].family}, ${plural(all.length, "line")}` +
      (paired ? `; ${sidesText()}` : "") + ". Bands: the passes' readings, or the rig's accuracy where there is one pass."),
    make("div", { class: "controls" },
      functionSelect(name, (value) => { location.hash = linkTo("function", { name: value }); }),
      moving.length < 2 ? null : moving.map((one) => selectOf(one, [{ value: "", text: "all" }, ...valuesOf(all, one).map((value) => ({ value, text: value }))],
        functionState.held[one] ?? "", (value) => { functionState.held[one] = value; again(); })),
      all.some((line) => line.elements) ? checkOf("per element", functionState.perElement, (on) => { functionState.perElement = on; again(); }) : null),
    charts);
  for (const one of shown) {
    parameterChart(charts, members, one);
  }
  if (shown.length === 0) {
    charts.append(make("p", {}, all.length === 0 ? "No figures of this function." : "A single line: there is no parameter to draw it against."));
  }
  view.append(make("h3", {}, "Lines"), tableOf([
    { title: "parameters", mark: () => "name", cell: (line) => courseLink(line, line.parameters || "none") },
    ...data.sides.map((side, index) => ({ title: paired ? ["old", "new"][index] : "clocks a call", number: true, cell: (line) => clocksText(line.sides[index]?.middle) })),
    ...data.sides.map((side, index) => ({ title: paired ? `band ${["old", "new"][index]}` : "band", number: true,
      cell: (line) => (line.sides[index] ? `${clocksText(line.sides[index].low)} .. ${clocksText(line.sides[index].high)}` : "") })),
    { title: "per element", number: true, cell: (line) => (line.elements ? clocksText(ofNow(line).middle / line.elements) : "") },
    ...(paired ? [
      { title: "change", number: true, mark: (line) => line.verdict?.verdict ?? "", cell: (line) => (line.verdict ? changeText(line.verdict.ratio) : "") },
      { title: "verdict", mark: (line) => line.verdict?.verdict ?? "", cell: (line) => line.verdict?.verdict ?? "" },
    ] : []),
  ], members));
}

// Where nothing is chosen: the function with the largest change, or the one with the most lines.
function startFunction() {
  const accused = judged.filter((line) => line.verdict.verdict === "slower" || line.verdict.verdict === "faster");
  if (accused.length > 0) {
    return accused.reduce((best, line) => (distance(line.verdict.ratio) > distance(best.verdict.ratio) ? line : best)).name;
  }
  return [...groupBy(current, (line) => line.name)].reduce((best, group) => (group[1].length > best[1].length ? group : best))[0];
}
