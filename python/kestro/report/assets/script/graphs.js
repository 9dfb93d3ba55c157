// Any graph drawn as boxes with their labels, with what lies in it marked.  As in
// _graphs.py the layout is turned and stretched in some ways, and the one is taken in
// which least lies on top of each other; labels of edges that find no room are left
// out.

const BOX = 17; // pixels that a box is high
const LETTERS = 11;
const EDGE_LETTERS = 10;
const LARGE = 25; // vertices, above which only marked ones have labels

function graphSvg(graph, [width, mostHigh], vertices = [], edges = []) {
  const marked = { vertices: new Set(vertices), edges: new Set(edges) };
  const isLarge = graph.vertices.length > LARGE;
  const links = triples(graph.edges).map(([source, target, label], i) => ({
    source, target, isMarked: marked.edges.has(i),
    text: tellsEdges ? shortened(data.edge_labels[label]) : "",
  }));
  const nodes = laidOut(graph.vertices.length, links);
  nodes.forEach((node, v) => {
    node.isMarked = marked.vertices.has(v);
    const isDot = isLarge && !node.isMarked;
    node.text = isDot ? "" : shortened(data.vertex_labels[graph.vertices[v]]);
    node.wide = isDot ? 6 : wide(node.text, LETTERS) + 9;
    node.high = isDot ? 6 : BOX;
  });
  for (const link of links) {
    if (isLarge && !link.isMarked) link.text = "";
    link.wide = wide(link.text, EDGE_LETTERS);
    link.high = link.text ? EDGE_LETTERS : 2;
  }
  const height = arrange(nodes, links, width, mostHigh, isLarge);
  const svg = drawn("svg", { viewBox: `0 0 ${width} ${height}` });
  for (const { source: a, target: b, isMarked } of links)
    svg.append(drawn("line", {
      x1: a.x, y1: a.y, x2: b.x, y2: b.y,
      stroke: isMarked ? "#000" : "#777", "stroke-width": isMarked ? 3.5 : 1,
    }));
  const taken = [...nodes];
  for (const link of d3.sort(links, (link) => !link.isMarked)) {
    const own = { ...link, x: (link.source.x + link.target.x) / 2,
      y: (link.source.y + link.target.y) / 2 };
    if (!link.text || taken.some((other) => meet(own, other))) continue;
    taken.push(own);
    svg.append(written(own, EDGE_LETTERS, link.text, 4));
  }
  nodes.forEach((node, v) => {
    svg.append(drawn("rect", {
      x: node.x - node.wide / 2, y: node.y - node.high / 2,
      width: node.wide, height: node.high,
      rx: node.high / 2, fill: node.isMarked ? "#ffd54a" : "#fff",
      stroke: node.isMarked ? "#000" : "#555", "stroke-width": node.isMarked ? 2 : 1,
      class: node.isMarked ? `marked vertex-${v}` : null,
    }));
    if (node.text) svg.append(written(node, LETTERS, node.text, 0));
  });
  return svg;
}

// Places by forces; links then hold their nodes.
function laidOut(count, links) {
  const nodes = Array.from({ length: count }, () => ({}));
  const rounds = count > 200 ? 60 : 200;
  d3.forceSimulation(nodes)
    .force("links", d3.forceLink(links).distance(30).strength(1))
    .force("apart", d3.forceManyBody().strength(-160).distanceMax(200))
    .force("x", d3.forceX().strength(0.1))
    .force("y", d3.forceY().strength(0.1))
    .stop()
    .tick(rounds);
  return nodes;
}

// Moves nodes to their places in a drawing, and returns how high it is.
function arrange(nodes, links, width, mostHigh, isLarge) {
  const across = Math.max(1, width - d3.max(nodes, (node) => node.wide) - 4);
  const down = mostHigh - BOX - 4;
  const length = d3.mean(links, ({ source: a, target: b }) =>
    Math.hypot(a.x - b.x, a.y - b.y)) || 1;
  const start = nodes.map(({ x, y }) => [x / length, y / length]);
  let best = null;
  for (const angle of isLarge ? [0] : d3.range(12).map((k) => (Math.PI * k) / 12))
    for (const part of isLarge ? [1] : d3.range(9).map((k) => k / 8)) {
      const high = place(nodes, start, angle, across, Math.max(1, part * down));
      const cost = isLarge ? 0 : costOf(nodes, links) + high / 60;
      if (best && best.cost <= cost) continue;
      best = { cost, high, places: nodes.map(({ x, y }) => [x, y]) };
    }
  const height = Math.round(best.high + BOX + 4);
  nodes.forEach((node, v) => {
    node.x = width / 2 + best.places[v][0];
    node.y = height / 2 + best.places[v][1];
  });
  return height;
}

// Turns and stretches a layout to fill the room, and returns how high it is then.
function place(nodes, start, angle, across, down) {
  const [cos, sin] = [Math.cos(angle), Math.sin(angle)];
  nodes.forEach((node, v) => {
    const [x, y] = start[v];
    node.x = x * cos - y * sin;
    node.y = x * sin + y * cos;
  });
  const [left, right] = d3.extent(nodes, (node) => node.x);
  const [top, bottom] = d3.extent(nodes, (node) => node.y);
  const own = [across / Math.max(right - left, 1e-3), down / Math.max(bottom - top, 1e-3)];
  const [scaleX, scaleY] = own.map((scale, k) =>
    Math.min(scale, 110, 2.5 * own[1 - k]));
  for (const node of nodes) {
    node.x = scaleX * (node.x - (left + right) / 2);
    node.y = scaleY * (node.y - (top + bottom) / 2);
  }
  return scaleY * (bottom - top);
}

// Boxes on boxes, edges on boxes of others, labels on anything.
function costOf(nodes, links) {
  let cost = 0;
  const labels = links.map((link) => ({ ...link,
    x: (link.source.x + link.target.x) / 2, y: (link.source.y + link.target.y) / 2 }));
  nodes.forEach((a, i) => {
    for (const b of nodes.slice(0, i)) if (meet(a, b, 3)) cost += 100;
    for (const label of labels) if (meet(a, label, 2)) cost += label.text ? 3 : 20;
  });
  labels.forEach((a, i) => {
    for (const b of labels.slice(0, i)) if (meet(a, b, 2)) cost += 3;
  });
  for (const { source: a, target: b } of links)
    for (const node of nodes)
      if (node !== a && node !== b && [0.2, 0.35, 0.65, 0.8].some((t) => meet(node,
        { x: a.x + t * (b.x - a.x), y: a.y + t * (b.y - a.y), wide: 3, high: 2 })))
        cost += 20;
  return cost;
}

function meet(a, b, more = 0) {
  return Math.abs(a.x - b.x) < (a.wide + b.wide) / 2 + more &&
    Math.abs(a.y - b.y) < (a.high + b.high) / 2 + Math.min(more, 2);
}

function written({ x, y }, size, text, halo) {
  return drawn("text", {
    x, y, dy: ".35em", "text-anchor": "middle", "font-size": size,
    "font-family": "sans-serif", fill: "#000",
    stroke: "#fff", "stroke-width": halo, "paint-order": "stroke",
  }, text);
}

const wide = (text, letters) => 0.58 * letters * text.length;
const shortened = (text) => (text.length > 14 ? text.slice(0, 13) + "…" : text);
