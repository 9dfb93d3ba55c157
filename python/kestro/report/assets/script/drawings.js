// Drawings of patterns, and of graphs with what lies in them marked.  The page shows
// them about as large, so that letters can be read; graphs are lower if they can.

const PATTERN_SIZE = ofMolecules ? [180, 115] : [180, 170];
const GRAPH_SIZE = ofMolecules ? [240, 185] : [340, 300];

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
