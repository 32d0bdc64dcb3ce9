// Charts: what all of them share. A figure with heading, canvas, and the same in words for those who can't see it.
const liveCharts = [];

function dropCharts() {
  for (const chart of liveCharts.splice(0)) {
    chart.destroy();
  }
}

// Ticks of a logarithmic axis: the fewer decades, the more within each.
function logTicks(scale) {
  const decades = Math.log10(scale.max / scale.min);
  const digits = decades > 3 ? [1] : decades > 1.2 ? [1, 2, 5] : [1, 1.5, 2, 3, 4, 5, 7];
  scale.ticks = [];
  for (let power = Math.floor(Math.log10(scale.min)); power <= Math.log10(scale.max); ++power) {
    scale.ticks.push(...digits.map((digit) => ({ value: digit * 10 ** power })).filter(({ value }) => value >= scale.min && value <= scale.max));
  }
}
const percentTick = (value) => (value === 1 ? "0" : changeText(value).replace(".0", ""));

// An axis in the colours of the ground.
function axis(type, title, more = {}) {
  return {
    type, ...(type === "logarithmic" ? { afterBuildTicks: logTicks } : {}), title: { display: true, text: title, color: ground.faint },
    grid: { color: ground.grid, borderColor: ground.faint }, ...more,
    ticks: { color: ground.faint, ...(type === "logarithmic" ? { callback: plainNumber, maxRotation: 0, autoSkip: false } : {}), ...more.ticks },
  };
}
// An axis of ratios, in percent of change; symmetric about none.
function ratioAxis(title, ratios, more = {}) {
  const most = Math.max(1.02, ...ratios.filter((ratio) => ratio > 0).map((ratio) => Math.exp(distance(ratio)))) ** 1.08;
  const steps = [0.001, 0.002, 0.005, 0.01, 0.02, 0.05, 0.1, 0.2, 0.5, 1, 2, 5, 10, 20, 50, 100];
  const span = most - 1;
  const step = steps.find((value) => span / value <= 4) ?? span / 4;
  return axis("logarithmic", title, {
    min: 1 / most, max: most, ...more,
    // Logarithmic ticks would stand at powers of ten, of which there are none near 1.
    afterBuildTicks: (scale) => {
      const ticks = [{ value: 1 }];
      for (let change = step; 1 + change <= most; change += step) {
        ticks.push({ value: 1 + change });
      }
      for (let change = step; 1 - change >= 1 / most; change += step) {
        ticks.push({ value: 1 - change });
      }
      scale.ticks = ticks.sort((a, b) => a.value - b.value);
    },
    ticks: { callback: percentTick, maxRotation: 0, autoSkip: true },
  });
}

// Shades the stretch low .. high of an axis ("x" or "y").
function zone(name, low, high) {
  return {
    id: "zone",
    beforeDatasetsDraw(chart) {
      const { ctx, chartArea } = chart;
      const scale = chart.scales[name];
      const from = scale.getPixelForValue(Math.max(low, scale.min));
      const to = scale.getPixelForValue(Math.min(high, scale.max));
      ctx.save();
      ctx.fillStyle = ground.zone;
      if (name === "x") {
        ctx.fillRect(from, chartArea.top, to - from, chartArea.bottom - chartArea.top);
      } else {
        ctx.fillRect(chartArea.left, from, chartArea.right - chartArea.left, to - from);
      }
      ctx.restore();
    },
  };
}
// A rule across the chart at a value of the x axis, with a word at its head.
function rules(marks) {
  return {
    id: "rules",
    afterDatasetsDraw(chart) {
      const { ctx, chartArea } = chart;
      ctx.save();
      ctx.font = "12px system-ui, sans-serif";
      for (const { at, text } of marks) {
        const x = chart.scales.x.getPixelForValue(at);
        ctx.strokeStyle = ctx.fillStyle = ground.verdict.slower;
        ctx.setLineDash([5, 4]);
        ctx.beginPath();
        ctx.moveTo(x, chartArea.top);
        ctx.lineTo(x, chartArea.bottom);
        ctx.stroke();
        ctx.textAlign = x > chartArea.right - 70 ? "right" : "left";
        ctx.fillText(text, x + (ctx.textAlign === "left" ? 4 : -4), chartArea.top + 11);
      }
      ctx.restore();
    },
  };
}

// Adds a figure to `place` and draws in it. `words` tells the chart to those who do not see it.
function drawChart(place, { title, note, words, height = 330, config }) {
  const canvas = make("canvas", { role: "img", "aria-label": words ?? title }, words ?? title);
  const plot = make("div", { class: "plot", style: `height: ${height}px` }, canvas);
  place.append(make("figure", {}, make("h3", {}, title), plot, note ? make("figcaption", {}, note) : null));
  const { options = {}, ...rest } = config;
  const chart = new Chart(canvas, {
    ...rest,
    options: {
      animation: false, responsive: true, maintainAspectRatio: false, ...options,
      interaction: { mode: "nearest", intersect: false, axis: "xy", ...options.interaction },
      plugins: {
        ...options.plugins,
        legend: {
          display: false, ...options.plugins?.legend,
          labels: { color: ground.text, usePointStyle: true, boxHeight: 7,
            // Bounds of bands are no series of their own.
            filter: (item, all) => !all.datasets[item.datasetIndex].bound },
        },
        tooltip: { filter: (item) => !item.dataset.bound, ...options.plugins?.tooltip },
      },
    },
  });
  liveCharts.push(chart);
  return chart;
}

// The data sets of a course with its band: `points` are { x, middle, low, high, ... } in the order of x.
function bandSets(points, { label, colour, index = 0 }) {
  const bound = { bound: true, pointRadius: 0, pointHitRadius: 0, borderWidth: 0, label: "", showLine: true };
  return [
    {
      label, data: points.map((point) => ({ ...point, y: point.middle })), borderColor: colour, backgroundColor: colour,
      borderDash: dashes[index % dashes.length], pointStyle: shapes[index % shapes.length], borderWidth: 2, pointRadius: 3.5,
      showLine: true, order: 0,
    },
    { ...bound, data: points.map((point) => ({ x: point.x, y: point.high })), order: 1 },
    {
      ...bound, data: points.map((point) => ({ x: point.x, y: point.low })), fill: "-1",
      backgroundColor: faded(colour, ground.band), order: 1,
    },
  ];
}
