// What was measured: files, machine, keys, times.
function fileRow(file) {
  const digest = [file.build_id ? `build-id ${file.build_id}` : "", file.sha256 ? `SHA-256 ${file.sha256}` : ""].filter((text) => text !== "");
  return [make("dt", {}, file.name || "program"), make("dd", {}, make("code", {}, file.path),
    digest.map((text) => [make("br"), make("code", {}, text)]).flat(), file.version ? [make("br"), file.version] : [])];
}

function identityCard(title, identity, more) {
  const { machine } = identity;
  const entry = (name, text) => (text === "" || text === undefined ? [] : [make("dt", {}, name), make("dd", {}, text)]);
  return make("div", { class: "card" }, make("h3", {}, title), make("dl", {},
    entry("subject", identity.subject),
    identity.program.path ? fileRow(identity.program) : [],
    identity.libraries.map(fileRow).flat(),
    entry("library", identity.rig_library),
    entry("processor", machine.processor), entry("as the rig tells it", identity.rig_cpu),
    entry("cores", machine.processors > 0 ? countText(machine.processors) : ""),
    entry("host", machine.host), entry("kernel", machine.kernel),
    entry("keys", identity.keys.length > 0 ? identity.keys.map(quoted).join(" ") : "none"),
    more.map(([name, text]) => entry(name, text)).flat()));
}

function showIdentity(view) {
  const cards = data.sides.map((side, index) => identityCard(sideTitle(index), data.identities[side.identity], [
    ["counter", side.counter_mhz > 0 ? `${side.counter_mhz.toFixed(0)} MHz` : ""],
    ["passes", side.first === side.last ? `${countText(side.passes)}, ${side.first}` : `${countText(side.passes)}, ${side.first} to ${side.last}`],
    ["load", side.load.some((load) => load > 0) ? `${side.load[0].toFixed(2)} at the start, ${side.load[1].toFixed(2)} at the end` : ""],
  ]));
  const others = data.identities.map((identity, index) => ({ identity, index })).filter(({ index }) => !data.sides.some((side) => side.identity === index));
  view.append(make("h2", {}, "What was measured"), make("div", { class: "columns" }, cards));
  if (others.length > 0) {
    view.append(make("h3", {}, "Others in the course"), make("div", { class: "columns" }, others.map(({ identity, index }) => {
      const points = data.points.filter((point) => point.identity === index);
      const labels = [...new Set(points.map((point) => point.label).filter((label) => label !== ""))];
      return identityCard(labels.join(", ") || identity.subject, identity, [["points", points.length > 0 ? `${countText(points.length)}, ${points[0].started} to ${points[points.length - 1].started}` : ""]]);
    })));
  }
  view.append(make("p", { class: "note" }, `This page was made ${data.made} by krlab; it needs no network. Charts are drawn by Chart.js (MIT licence), which is part of it.`));
}
