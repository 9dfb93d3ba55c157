// The pattern that is looked at; the address of the page says which.

function showDetails(pattern, isAsked) {
  table.chosen = pattern;
  byId("details").classList.remove("empty");
  byId("details-title").textContent = `Pattern ${pattern.id}`;
  const counts = `${pattern.size} ${pattern.size === 1 ? "edge" : "edges"}, in ${whole(pattern.support)} of ` +
    `${whole(data.graphs)} graphs (${share(pattern.support)})`;
  const parts = [make("span", {}, counts)];
  if (data.scores)
    data.scores.forEach((score, which) => {
      const { inside, outside, odds, p } = scoreOf(pattern, which);
      const others = score.other === null ? "others" : `class ${score.other}`;
      parts.push(make("br"), `Class ${score.name}: in ${whole(inside)} of ` +
        `${whole(score.members)} graphs, ${others}: in ${whole(outside)} of ` +
        `${whole(data.graphs - score.members)}; ` +
        `odds ratio ${decimal(odds)}, −log10 p ${p.toFixed(2)}`);
    });
  const kind = kindOf(pattern);
  if (kind) parts.push(make("br"), kind[0].toUpperCase() + kind.slice(1));
  parts.push(make("br"), make("code", {}, textOf(pattern)));
  byId("details-told").replaceChildren(...parts);
  showLattice(pattern);
  showExamples(pattern);
  showRows();
  markVolcano();
  if (isAsked) byId("details").focus();
}

function showExamples(pattern) {
  const box = byId("examples");
  if (!box) return;
  byId("examples-title").hidden = pattern.examples.length === 0;
  box.replaceChildren(...pattern.examples.map(([place, vertices]) => {
    const graph = data.examples[place];
    let caption = `Graph ${graph.tid}`;
    if (graph.record !== graph.tid) caption += `, record ${graph.record}`;
    if (data.class_of) caption += `, class ${data.class_of[place]}`;
    const kind = ofMolecules ? null : "graph";
    return make("figure", { class: kind }, examplePicture(pattern, graph, vertices),
      make("figcaption", {}, caption));
  }));
}

function followAddress(isAsked) {
  let id = "";
  try {
    id = decodeURIComponent(location.hash.slice(1));
  } catch {
    // An address that names no pattern.
  }
  const at = places.get(id);
  if (at !== undefined) showDetails(patterns[at], isAsked);
}

function startDetails() {
  byId("details").classList.add("empty");
  byId("details").addEventListener("keydown", walkLattice);
  addEventListener("hashchange", () => followAddress(true));
  addEventListener("resize", drawLines);
  addEventListener("beforeprint", () => keepWidth(true));
  addEventListener("afterprint", () => keepWidth(false));
  followAddress(false);
}
