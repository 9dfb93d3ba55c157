// What the page holds, a record per pattern.

const data = JSON.parse(document.getElementById("data").textContent);
const columns = data.patterns;

const patterns = columns.id.map((id, at) => ({
  at,
  id,
  size: Number(id.split("-")[0]),
  number: Number(id.split("-")[1]),
  support: columns.support[at],
  vertices: columns.vertices[at], // numbers of labels
  edges: columns.edges[at], // two ends and the number of a label each
  closed: columns.closed[at], // null where that is unknown
  maximal: columns.maximal[at],
  smarts: columns.smarts ? columns.smarts[at] : null,
  parents: columns.parents[at], // places in this list
  children: [],
  outside: columns.outside[at], // parents and children that are not in the page
  examples: columns.examples[at], // a graph and its vertices each
  drawing: columns.drawing[at], // null where it is drawn when looked at
}));
for (const pattern of patterns)
  for (const parent of pattern.parents) patterns[parent].children.push(pattern.at);

const places = new Map(patterns.map((pattern) => [pattern.id, pattern.at]));
const ofMolecules = data.atoms !== null;
// A label that all edges have tells nothing.
const tellsEdges = data.edge_labels.length > 1;

// What is shown beside the drawing: the SMARTS, or the edges with their labels.
function textOf(pattern) {
  if (pattern.smarts !== null) return pattern.smarts;
  const vertex = (v) => `${data.vertex_labels[pattern.vertices[v]]}#${v}`;
  const edge = (label) => (tellsEdges ? `–${data.edge_labels[label]}–` : "–");
  return triples(pattern.edges)
    .map(([a, b, label]) => `${vertex(a)} ${edge(label)} ${vertex(b)}`)
    .join(", ");
}

function triples(flat) {
  const found = [];
  for (let i = 0; i < flat.length; i += 3) found.push(flat.slice(i, i + 3));
  return found;
}

// Counts of a pattern for a class, and what they give.  A ratio is infinite where
// its denominator alone is 0.
function scoreOf(pattern, which) {
  const score = data.scores[which];
  const inside = score.inside[pattern.at];
  const outside = pattern.support - inside;
  const others = data.graphs - score.members;
  const ratio = (a, b) => (b > 0 ? a / b : a > 0 ? Infinity : NaN);
  return {
    inside,
    outside,
    odds: ratio(inside * (others - outside), outside * (score.members - inside)),
    growth: ratio(inside / score.members, outside / others),
    p: score.score[pattern.at], // -log10 of it
  };
}

const decimal = (value) =>
  value === Infinity ? "∞" : Number.isNaN(value) ? "–" : value.toFixed(2);
const whole = (value) => value.toLocaleString("en");
const share = (support) => ((100 * support) / data.graphs).toFixed(1) + " %";
