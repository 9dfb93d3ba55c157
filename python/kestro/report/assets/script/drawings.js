// Drawings of patterns, and of graphs with what lies in them marked.

const PATTERN_SIZE = [150, 110];
const GRAPH_SIZE = [300, 230];

// A span that holds the drawing of a pattern at once or soon.
function picture(pattern, isTold = false) {
  const what = isTold
    ? { role: "img", "aria-label": `Drawing of pattern ${pattern.id}: ${textOf(pattern)}` }
    : { "aria-hidden": "true" };
  const span = make("span", { class: "picture", ...what });
  if (pattern.drawing !== null) {
    span.append(parsed(pattern.drawing));
  } else if (ofMolecules && hasStructures) {
    fillWith(span, (rdkit) => moleculeSvg(rdkit, pattern.smarts, PATTERN_SIZE), pattern);
  } else {
    span.append(graphSvg(pattern, PATTERN_SIZE));
  }
  return span;
}

// An example graph with the vertices and edges of an embedding marked.
function examplePicture(pattern, graph, vertices) {
  const edges = markedEdges(pattern, graph, vertices);
  const label = `Graph ${graph.tid} with pattern ${pattern.id} marked`;
  const span = make("span", { role: "img", "aria-label": label });
  span.dataset.vertices = vertices.join(" ");
  if (ofMolecules && hasStructures) {
    fillWith(
      span,
      (rdkit) => moleculeSvg(rdkit, graph.smarts, GRAPH_SIZE, vertices, edges),
      graph, vertices, edges,
    );
  } else {
    span.append(graphSvg(graph, GRAPH_SIZE, vertices, edges));
  }
  return span;
}

// Where RDKit cannot draw it, it is drawn as any graph is.
async function fillWith(span, draw, graph, vertices, edges) {
  const size = vertices ? GRAPH_SIZE : PATTERN_SIZE;
  let svg = null;
  try {
    svg = draw(await chemistry());
  } catch (error) {
    span.title = `RDKit cannot draw this: ${error}`;
  }
  span.replaceChildren(svg ?? graphSvg(graph, size, vertices, edges));
}

// The edges of a graph on which those of a pattern lie.
function markedEdges(pattern, graph, vertices) {
  const key = (a, b) => Math.min(a, b) + "," + Math.max(a, b);
  const wanted = new Set(
    triples(pattern.edges).map(([a, b]) => key(vertices[a], vertices[b])),
  );
  return triples(graph.edges).flatMap(([a, b], i) => (wanted.has(key(a, b)) ? [i] : []));
}

// Draws any graph, laid out by forces.
function graphSvg(graph, [width, height], vertices = [], edges = []) {
  const marked = { vertices: new Set(vertices), edges: new Set(edges) };
  const links = triples(graph.edges).map(([source, target, label]) =>
    ({ source, target, label }));
  const nodes = laidOut(graph.vertices.length, links);
  fit(nodes, width, height);
  const small = nodes.length > 25;
  const svg = drawn("svg", { viewBox: `0 0 ${width} ${height}` });
  links.forEach(({ source: a, target: b, label }, i) => {
    const isMarked = marked.edges.has(i);
    svg.append(drawn("line", {
      x1: a.x, y1: a.y, x2: b.x, y2: b.y,
      stroke: isMarked ? "#000" : "#777", "stroke-width": isMarked ? 3.5 : 1,
    }));
    if (!small && tellsEdges) {
      const middle = [(a.x + b.x) / 2, (a.y + b.y) / 2];
      svg.append(written(middle, 7, data.edge_labels[label], "#555"));
    }
  });
  nodes.forEach((node, v) => {
    const text = shortened(data.vertex_labels[graph.vertices[v]]);
    const isMarked = marked.vertices.has(v);
    const wide = small && !isMarked ? 6 : Math.max(16, 5.2 * text.length + 8);
    const high = small && !isMarked ? 6 : 16;
    svg.append(drawn("rect", {
      x: node.x - wide / 2, y: node.y - high / 2, width: wide, height: high,
      rx: high / 2, fill: isMarked ? "#ffd54a" : "#fff",
      stroke: isMarked ? "#000" : "#555", "stroke-width": isMarked ? 2 : 1,
      class: isMarked ? `marked vertex-${v}` : null,
    }));
    if (!small || isMarked) svg.append(written([node.x, node.y], 9, text, "#000"));
  });
  return svg;
}

function laidOut(count, links) {
  const nodes = Array.from({ length: count }, () => ({}));
  const rounds = count > 200 ? 60 : 200;
  d3.forceSimulation(nodes)
    .force("links", d3.forceLink(links).distance(30).strength(1))
    .force("apart", d3.forceManyBody().strength(-160))
    .force("x", d3.forceX().strength(0.05))
    .force("y", d3.forceY().strength(0.05))
    .stop()
    .tick(rounds);
  return nodes;
}

function fit(nodes, width, height) {
  const across = d3.extent(nodes, (node) => node.x);
  const down = d3.extent(nodes, (node) => node.y);
  const room = [width - 60, height - 30];
  const scale = Math.min(
    1.6,
    room[0] / Math.max(across[1] - across[0], 1e-3),
    room[1] / Math.max(down[1] - down[0], 1e-3),
  );
  for (const node of nodes) {
    node.x = width / 2 + scale * (node.x - (across[0] + across[1]) / 2);
    node.y = height / 2 + scale * (node.y - (down[0] + down[1]) / 2);
  }
}

function written([x, y], size, text, fill) {
  return drawn("text", {
    x, y, dy: ".35em", "text-anchor": "middle", "font-size": size,
    "font-family": "sans-serif", fill,
    stroke: "#fff", "stroke-width": size === 7 ? 2 : 0, "paint-order": "stroke",
  }, shortened(text));
}

const shortened = (text) => (text.length > 14 ? text.slice(0, 13) + "…" : text);
