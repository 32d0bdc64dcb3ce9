// Every line as a point: new against old, and the ratio against the length of a call, with the band of noise.
const binLines = 120; // lines that tell the noise about one place of the axis

// The band of noise along the axis: of neighbouring lines the usual half width of the interval; where no interval is
// known, what nine of ten ratios keep within.
function noiseBand() {
  const sorted = [...judged].sort((a, b) => a.verdict.older - b.verdict.older);
  const known = sorted.some((line) => line.verdict.low !== null);
  const bins = Math.max(1, Math.round(sorted.length / binLines));
  const band = [];
  for (let bin = 0; bin < bins; ++bin) {
    const own = sorted.slice(Math.floor((bin * sorted.length) / bins), Math.floor(((bin + 1) * sorted.length) / bins));
    const half = known
      ? median(own.map((line) => (line.verdict.low > 0 ? Math.log(line.verdict.high / line.verdict.low) / 2 : null)))
      : quantile(own.map((line) => distance(line.verdict.ratio)), 0.9);
    if (half !== null) {
      band.push({ from: own[0].verdict.older, to: own[own.length - 1].verdict.older, x: median(own.map((line) => line.verdict.older)), half });
    }
  }
  if (band.length > 0) {
    band.unshift({ ...band[0], x: band[0].from });
    band.push({ ...band[band.length - 1], x: band[band.length - 1].to });
  }
  return { known, band };
}

function scatterChart(place, { title, note, at, axes, band }) {
  const bound = { type: "line", bound: true, pointRadius: 0, pointHitRadius: 0, borderWidth: 0, order: 5, label: "" };
  const datasets = [
    { ...bound, data: band.map((one) => at(one.x, one.x * Math.exp(one.half))) },
    { ...bound, data: band.map((one) => at(one.x, one.x * Math.exp(-one.half))), fill: "-1", backgroundColor: faded(ground.series[2], ".3") },
    // What changed stands on top of what did not.
    ...verdictNames.map((verdict, order) => ({
      type: "scatter", label: verdict, order, pointStyle: verdictShapes[verdict], pointRadius: { same: 2.5, undecided: 3.5 }[verdict] ?? 6, pointHoverRadius: 7,
      borderColor: ground.verdict[verdict], backgroundColor: verdict === "same" ? faded(ground.verdict.same, ".55") : ground.verdict[verdict],
      data: judged.filter((line) => line.verdict.verdict === verdict).map((line) => ({ ...at(line.verdict.older, line.verdict.newer), line })),
    })).filter((set) => set.data.length > 0),
  ];
  return drawChart(place, {
    title, note, height: 460,
    words: `${title}: ${plural(judged.length, "line")}, ` + verdictNames.map((verdict) => `${judged.filter((line) => line.verdict.verdict === verdict).length} ${verdict}`).join(", ") + ".",
    config: {
      type: "scatter", data: { datasets },
      options: {
        scales: axes, interaction: { mode: "nearest", intersect: true },
        onClick: (event, hits) => {
          const line = hits.map((hit) => datasets[hit.datasetIndex].data[hit.index].line).find((one) => one);
          if (line) {
            location.hash = linkTo("function", { name: line.name });
          }
        },
        plugins: {
          legend: { display: true, position: "bottom" },
          tooltip: { callbacks: { label: (item) => [item.raw.line.text, `${clocksText(item.raw.line.verdict.older)} → ${clocksText(item.raw.line.verdict.newer)}, ${changeText(item.raw.line.verdict.ratio)} (${intervalText(item.raw.line)})`] } },
        },
      },
    },
  });
}

function showScatter(view) {
  const { known, band } = noiseBand();
  const charts = make("div", { class: "columns" });
  view.append(make("h2", {}, "All lines, old against new"),
    make("p", { class: "note" }, `${sidesText()}. The green band is the noise: ` + (known
      ? "the usual half width of the ratios' intervals among lines of that length."
      : "within it are nine of ten ratios among lines of that length; with one pass of each side no more is known.") +
      " Click a point for its function."),
    charts);
  if (judged.length === 0) {
    charts.append(make("p", {}, "No line in common."));
    return;
  }
  const figures = judged.flatMap((line) => [line.verdict.older, line.verdict.newer]);
  const span = { min: Math.min(...figures) / 1.2, max: Math.max(...figures) * 1.2 };
  scatterChart(charts, {
    title: "new against old, clocks a call", band, at: (older, newer) => ({ x: older, y: newer }),
    axes: { x: axis("logarithmic", "old, clocks a call", span), y: axis("logarithmic", "new, clocks a call", span) },
  });
  scatterChart(charts, {
    title: "ratio against clocks a call", band, at: (older, newer) => ({ x: older, y: newer / older }),
    axes: { x: axis("logarithmic", "old, clocks a call", span), y: ratioAxis("new / old", judged.map((line) => line.verdict.ratio)) },
  });
}
