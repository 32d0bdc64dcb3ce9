// The views and how one gets to them: by the bar, by links, by keyboard.
const views = [
  { id: "summary", title: "Summary", show: showSummary },
  { id: "lines", title: "Lines", show: showLines },
  { id: "function", title: "Function", show: showFunction },
  ...(paired ? [
    { id: "sides", title: "Old and new", show: showSides },
    { id: "scatter", title: "Scatter", show: showScatter },
  ] : []),
  ...(data.kinds.length > 0 ? [{ id: "machines", title: "Machines", show: showMachines }] : []),
  { id: "families", title: "Families", show: showFamilies },
  { id: "course", title: "Course", show: showCourse },
  { id: "identity", title: "What was measured", show: showIdentity },
];
const root = document.documentElement;
const place = document.getElementById("view");
let shownView = null;
let shownChoice = {};

function showView(id, choice) {
  const view = views.find((one) => one.id === id) ?? views[0];
  shownView = view;
  shownChoice = choice;
  dropCharts();
  const section = make("section", { id: view.id });
  place.replaceChildren(section);
  Chart.defaults.color = ground.text;
  if (current.length === 0 && view.id !== "identity") {
    section.append(make("p", { class: "warning" }, "No line has a figure."));
  } else {
    view.show(section, choice);
  }
  for (const link of document.querySelectorAll("#views a")) {
    if (link.dataset.view === view.id) {
      link.setAttribute("aria-current", "page");
    } else {
      link.removeAttribute("aria-current");
    }
  }
  document.title = `${view.title}: ${data.title}`;
}

function followAddress() {
  const [id, query] = location.hash.slice(1).split("?");
  showView(id, Object.fromEntries(new URLSearchParams(query ?? "")));
  window.scrollTo(0, 0);
}

// The reader's choice of light or dark, else that of the system. Where a page from a file may not keep anything, the
// choice lasts as long as the page.
const systemDark = matchMedia("(prefers-color-scheme: dark)");
let chosenTheme = null;
try {
  chosenTheme = localStorage.getItem("krlab-theme");
} catch {
  chosenTheme = null;
}
function applyTheme(theme) {
  root.dataset.theme = theme;
  ground = grounds[theme];
  document.getElementById("theme").textContent = theme === "dark" ? "Light page" : "Dark page";
}
const themeNow = () => chosenTheme ?? (systemDark.matches ? "dark" : "light");
function redraw(theme) {
  const [x, y] = [window.scrollX, window.scrollY];
  applyTheme(theme);
  showView(shownView.id, shownChoice);
  window.scrollTo(x, y);
}
document.getElementById("theme").addEventListener("click", () => {
  chosenTheme = themeNow() === "dark" ? "light" : "dark";
  try {
    localStorage.setItem("krlab-theme", chosenTheme);
  } catch {
    // Kept for this page only.
  }
  redraw(chosenTheme);
});
systemDark.addEventListener("change", () => redraw(themeNow()));
// Paper is white. Charts are drawn anew at the width of the paper.
addEventListener("beforeprint", () => {
  if (themeNow() === "dark") {
    redraw("light");
  }
  for (const chart of liveCharts) {
    chart.resize(640, chart.height);
  }
});
addEventListener("afterprint", () => redraw(themeNow()));

addEventListener("keydown", (event) => {
  const typing = event.target.matches("input[type=search], input[type=text], select");
  if (event.ctrlKey || event.altKey || event.metaKey || (typing && event.key !== "Escape")) {
    return;
  }
  const number = Number(event.key);
  if (event.key === "/") {
    const focus = () => document.getElementById("search").focus();
    if (shownView.id === "lines") {
      focus();
    } else {
      // Behind the handler that shows the view.
      addEventListener("hashchange", focus, { once: true });
      location.hash = linkTo("lines");
    }
    event.preventDefault();
  } else if (event.key === "Escape" && typing) {
    event.target.blur();
    place.focus();
  } else if (number >= 1 && number <= views.length) {
    location.hash = linkTo(views[number - 1].id);
  }
});
document.getElementById("skip").addEventListener("click", (event) => {
  event.preventDefault();
  place.focus();
});

document.getElementById("title").textContent = data.title;
document.getElementById("subtitle").textContent = `Clocks of the processor, measured ${data.points.length > 0 ? pointTime(data.points[data.points.length - 1]) : ""}; ` +
  `${data.machines.join("; ")}. Keys: / search, 1 to ${views.length} views.`;
document.getElementById("views").append(...views.map((view, index) =>
  make("a", { href: linkTo(view.id), "data-view": view.id, "aria-keyshortcuts": String(index + 1) }, view.title)));
Chart.defaults.font.family = "system-ui, 'Liberation Sans', 'DejaVu Sans', sans-serif";
applyTheme(themeNow());
addEventListener("hashchange", followAddress);
followAddress();
// How long it took until the first view stood, in milliseconds from the start of loading.
root.dataset.ready = String(Math.round(performance.now()));
