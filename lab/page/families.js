// Bars by family.
function showFamilies(view) {
  const groups = [...groupBy(current, (line) => line.family)].map(([name, members]) => ({ name, members, judged: members.filter((line) => line.verdict !== null) }));
  const labels = groups.map((group) => group.name);
  const height = 80 + groups.length * 26;
  const charts = make("div", { class: "columns" });
  const common = (x, legend = false) => ({
    indexAxis: "y", interaction: { mode: "index", axis: "y" },
    onClick: (event, hits) => { if (hits.length > 0) { location.hash = linkTo("lines", { family: labels[hits[0].index] }); } },
    scales: { x, y: axis("category", "", { stacked: legend, ticks: { autoSkip: false }, title: { display: false } }) },
  });
  view.append(make("h2", {}, "Families"), make("p", { class: "note" }, "Click a bar for the lines of that family."), charts);
  if (paired) {
    const means = groups.map((group) => geometricMean(group.judged.map((line) => line.verdict.ratio)));
    drawChart(charts, {
      title: "change of the family, geometric mean", height, words: "Geometric mean of the ratios by family; the figures stand in the table below.",
      config: {
        type: "bar", data: { labels, datasets: [{ label: "change", base: 1, data: means, backgroundColor: means.map((mean) => (mean > 1 ? ground.verdict.slower : ground.verdict.faster)) }] },
        options: { ...common(ratioAxis("new / old", means.filter((mean) => mean !== null), { position: "top" })), plugins: { tooltip: { callbacks: { label: (item) => changeText(item.raw) } } } },
        plugins: [zone("x", 1 / (1 + data.verdicts.threshold), 1 + data.verdicts.threshold)],
      },
    });
    drawChart(charts, {
      title: "verdicts, share of the family's lines", height, words: "Verdicts by family; the figures stand in the table below.",
      config: {
        type: "bar", data: { labels, datasets: verdictNames.map((verdict) => ({
          label: verdict, backgroundColor: ground.verdict[verdict],
          data: groups.map((group) => (group.judged.length === 0 ? 0 : (100 * group.judged.filter((line) => line.verdict.verdict === verdict).length) / group.judged.length)),
        })) },
        options: { ...common(axis("linear", "% of lines", { position: "top", stacked: true, min: 0, max: 100 }), true), plugins: { legend: { display: true, position: "bottom" }, tooltip: { callbacks: { label: (item) => `${item.dataset.label}: ${item.raw.toFixed(1)} %` } } } },
      },
    });
  } else {
    const medians = groups.map((group) => median(group.members.map((line) => ofNow(line).middle)));
    drawChart(charts, {
      title: "clocks a call, median of the family's lines", height, words: "Median clocks a call by family; the figures stand in the table below.",
      config: {
        type: "bar", data: { labels, datasets: [{ label: "clocks", data: medians, backgroundColor: seriesColour(0) }] },
        options: { ...common(axis("logarithmic", "clocks a call", { position: "top", min: 0.5 * Math.min(...medians) })), plugins: { tooltip: { callbacks: { label: (item) => clocksText(item.raw) } } } },
      },
    });
    const noises = groups.map((group) => 100 * (median(group.members.map(noiseOf)) ?? 0));
    drawChart(charts, {
      title: "band of the passes, median of the family's lines", height, words: "Median width of the band by family; the figures stand in the table below.",
      config: {
        type: "bar", data: { labels, datasets: [{ label: "band", data: noises, backgroundColor: seriesColour(1) }] },
        options: { ...common(axis("linear", "% of the clocks", { position: "top", min: 0 })), plugins: { tooltip: { callbacks: { label: (item) => `${item.raw.toFixed(1)} %` } } } },
      },
    });
  }
  const count = (group, verdict) => countText(group.judged.filter((line) => line.verdict.verdict === verdict).length);
  view.append(make("h3", {}, "Figures"), tableOf([
    { title: "family", cell: (group) => make("a", { href: linkTo("lines", { family: group.name }) }, group.name) },
    { title: "functions", number: true, cell: (group) => countText(new Set(group.members.map((line) => line.name)).size) },
    { title: "lines", number: true, cell: (group) => countText(group.members.length) },
    ...(paired ? [
      ...verdictNames.map((verdict) => ({ title: verdict, number: true, cell: (group) => count(group, verdict) })),
      { title: "change", number: true, cell: (group) => (group.judged.length === 0 ? "" : changeText(geometricMean(group.judged.map((line) => line.verdict.ratio)))) },
    ] : [{ title: "median clocks", number: true, cell: (group) => clocksText(median(group.members.map((line) => ofNow(line).middle))) }]),
    { title: "median band", number: true, cell: (group) => shareText(median(group.members.map(noiseOf))) },
  ], groups));
}
