// Class scores: how much more often against how unlikely by chance.  Of the points
// one can be reached by the tabulator, the others by arrows from it.

const isNarrow = matchMedia("(max-width: 40rem)").matches;
const VOLCANO = { width: isNarrow ? 420 : 900, height: 380, left: 52, right: 16, top: 18, bottom: 36 };
const volcano = { points: [], at: 0, mode: "odds" };

function startVolcano() {
  if (!data.scores) return;
  byId("volcano-x").addEventListener("change", drawVolcano);
  byId("volcano-class")?.addEventListener("change", () => {
    readFilters();
    select();
    drawVolcano();
  });
  selection.changed.push(markVolcano);
  drawVolcano();
}

function drawVolcano() {
  const which = scoredClass();
  volcano.mode = byId("volcano-x").value;
  const points = patterns.map((pattern) => {
    const score = scoreOf(pattern, which);
    return { pattern, ...score, x: Math.log2(score[volcano.mode]) };
  }).filter((point) => !Number.isNaN(point.x));
  const finite = points.map((point) => Math.abs(point.x)).filter(Number.isFinite);
  const reach = (d3.max(finite) ?? 1) * 1.08 || 1;
  const x = d3.scaleLinear([-reach, reach],
    [VOLCANO.left + 10, VOLCANO.width - VOLCANO.right - 10]);
  const top = d3.max(points, (point) => point.p) || 1;
  const y = d3.scaleLinear([0, top], [VOLCANO.height - VOLCANO.bottom, VOLCANO.top]).nice();
  points.sort((a, b) => b.p - a.p || a.pattern.at - b.pattern.at);

  const { name } = data.scores[which];
  const other = data.scores[which].other ?? "others";
  const svg = drawn("svg", {
    class: "chart", viewBox: `0 0 ${VOLCANO.width} ${VOLCANO.height}`, role: "group",
    "aria-label": `Patterns of ${name} against ${other}. Arrows go from point to ` +
      "point, Enter chooses the pattern.",
  });
  axes(svg, d3.axisBottom(x).ticks(isNarrow ? 5 : 10), d3.axisLeft(y).ticks(6),
    [`log2 ${volcano.mode === "odds" ? "odds ratio" : "growth rate"} of ${name} ` +
      `against ${other}`, "−log10 p"], VOLCANO);
  svg.append(drawn("line", { x1: x(0), x2: x(0), y1: VOLCANO.top, y2: y(0),
    stroke: "#999", "stroke-dasharray": "3 3" }));
  const group = drawn("g", { class: "points" });
  svg.append(group);
  volcano.points = points.map((point) => {
    const across = Math.max(-reach, Math.min(reach, point.x));
    const element = drawn("path", {
      d: shapeOf(point.x), transform: `translate(${x(across)},${y(point.p)})`,
      role: "button", tabindex: "-1", "data-id": point.pattern.id,
      "aria-label": told(point),
    });
    return { ...point, element, left: x(across) };
  });
  // What matters most lies on top.
  group.append(...volcano.points.map((point) => point.element).reverse());
  group.addEventListener("keydown", walkVolcano);
  // Thousands of titles would take time before one is wanted.
  group.addEventListener("pointerover", ({ target }) => {
    if (target.dataset.id && !target.firstChild)
      target.append(drawn("title", {}, target.getAttribute("aria-label")));
  });
  group.addEventListener("click", (event) => openPoint(event.target));
  volcano.at = 0;
  volcano.points[0]?.element.setAttribute("tabindex", "0");
  byId("volcano").replaceChildren(svg, make("p", { class: "legend" },
    "Triangles at the edges: infinite, as one side has none. Pale: not selected. ",
    make("span", { class: "hint" }, "Left and right go across, up and down by p.")));
  markVolcano();
}

function told(point) {
  return `${point.pattern.id}: −log10 p ${point.p.toFixed(2)}, ` +
    `odds ratio ${decimal(point.odds)}, growth rate ${decimal(point.growth)}, ` +
    `in ${point.inside} graphs of the class, ${point.outside} others`;
}

function shapeOf(x) {
  if (x === Infinity) return "M-4,-4L4,0L-4,4Z";
  if (x === -Infinity) return "M4,-4L-4,0L4,4Z";
  return "M-3.5,0a3.5,3.5 0 1,0 7,0a3.5,3.5 0 1,0 -7,0";
}

function markVolcano() {
  const selected = new Set(selection.patterns);
  for (const { pattern, element } of volcano.points) {
    element.classList.toggle("off", !selected.has(pattern));
    element.classList.toggle("chosen", table.chosen === pattern);
  }
}

function walkVolcano(event) {
  const points = volcano.points;
  const at = points.findIndex((point) => point.element === event.target);
  if (event.key === "Enter" || event.key === " ") {
    event.preventDefault();
    openPoint(event.target);
    return;
  }
  const across = [...points.keys()].sort((a, b) => points[a].left - points[b].left || a - b);
  const rank = across.indexOf(at);
  const next = {
    ArrowLeft: across[rank - 1], ArrowRight: across[rank + 1],
    ArrowUp: at - 1, ArrowDown: at + 1, Home: 0, End: points.length - 1,
  }[event.key];
  if (next === undefined || at < 0 || !points[next]) return;
  event.preventDefault();
  points[volcano.at].element.setAttribute("tabindex", "-1");
  points[at].element.setAttribute("tabindex", "-1");
  volcano.at = next;
  points[next].element.setAttribute("tabindex", "0");
  points[next].element.focus();
}

function openPoint(element) {
  const id = element.closest("[data-id]")?.dataset.id;
  if (id) location.hash = id;
}
