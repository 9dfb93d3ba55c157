// How many patterns there are by size and by support.

const CHART = { width: 420, height: 220, left: 52, right: 8, top: 18, bottom: 36 };

function chart(label) {
  return drawn("svg", {
    class: "chart", viewBox: `0 0 ${CHART.width} ${CHART.height}`,
    role: "img", "aria-label": label,
  });
}

function axes(svg, x, y, names, box = CHART) {
  const bottom = box.height - box.bottom;
  d3.select(svg).append("g").attr("transform", `translate(0,${bottom})`).call(x);
  d3.select(svg).append("g").attr("transform", `translate(${box.left},0)`).call(y);
  const middle = (box.left + box.width - box.right) / 2;
  svg.append(
    drawn("text", { x: middle, y: box.height - 4, "text-anchor": "middle" }, names[0]),
    drawn("text", { x: 2, y: 10 }, names[1]),
  );
}

// The same numbers for who reads rather than looks.
function chartTable(names, rows) {
  const cell = (tag) => (value) =>
    make(tag, tag === "th" ? { scope: "col" } : { class: "number" },
      value === null ? "–" : typeof value === "number" ? whole(value) : value);
  return make("details", { class: "chart-table" },
    make("summary", {}, "As a table"),
    make("table", {},
      make("thead", {}, make("tr", {}, ...names.map(cell("th")))),
      make("tbody", {}, ...rows.map((row) => make("tr", {}, ...row.map(cell("td")))))));
}

// An axis of counts: whole numbers, written out up to 9,999.
function counted(axis, ticks) {
  const count = (value) => (value < 10000 ? whole(value) : d3.format("~s")(value));
  return axis.tickValues(ticks.filter(Number.isInteger)).tickFormat(count);
}

function sizesChart() {
  const rows = data.sizes;
  const hasCandidates = rows.some((row) => row[1]);
  const svg = chart("Candidates and frequent patterns by size; a table follows.");
  const x = d3.scaleBand(rows.map((row) => row[0]),
    [CHART.left, CHART.width - CHART.right]).padding(0.2);
  const most = d3.max(rows, (row) => Math.max(row[1] ?? 0, row[2])) ?? 1;
  const y = d3.scaleLinear([0, most], [CHART.height - CHART.bottom, CHART.top]).nice();
  const half = x.bandwidth() / (hasCandidates ? 2 : 1);
  const bar = (at, value, kind, what) => drawn("rect", {
    class: `bar ${kind}`, x: at, width: half, y: y(value), height: y(0) - y(value),
  }, drawn("title", {}, what));
  for (const [size, candidates, frequent] of rows) {
    const left = x(size);
    if (candidates)
      svg.append(bar(left, candidates, "light", `${size}: ${candidates} candidates`));
    // One bar alone stands over the size.
    const own = left + (candidates ? half : (x.bandwidth() - half) / 2);
    svg.append(bar(own, frequent, "", `${size}: ${frequent} frequent`));
  }
  axes(svg, d3.axisBottom(x), counted(d3.axisLeft(y), y.ticks(5)), ["edges", "patterns"]);
  byId("sizes").append(svg,
    make("p", { class: "legend" },
      hasCandidates ? "Filled: frequent. Outlined: candidates, from three edges on." : ""),
    chartTable(["Edges", "Candidates", "Frequent", "In the result"], rows));
}

function supportsChart() {
  const { start, width, counts } = data.histogram;
  const svg = chart("Patterns by support; a table follows.");
  const end = start + width * counts.length;
  const x = d3.scaleLinear([start, end], [CHART.left, CHART.width - CHART.right]);
  const most = d3.max(counts) ?? 1;
  const y = d3.scaleSymlog([0, most],
    [CHART.height - CHART.bottom, CHART.top]);
  const rangeOf = (i) => {
    const [low, high] = [start + i * width, start + (i + 1) * width - 1];
    return low === high ? whole(low) : `${whole(low)} to ${whole(high)}`;
  };
  counts.forEach((count, i) => {
    const [left, right] = [x(start + i * width), x(start + (i + 1) * width)];
    svg.append(drawn("rect", {
      class: "bar", x: left + 0.5, width: Math.max(right - left - 1, 0.5),
      y: y(count), height: y(0) - y(count),
    }, drawn("title", {}, `${rangeOf(i)}: ${count}`)));
  });
  const steps = most < 100 ? [1, 2, 5] : [1];
  const ticks = [0, ...d3.range(8).flatMap((k) => steps.map((step) => step * 10 ** k))]
    .filter((tick) => tick <= most);
  axes(svg, counted(d3.axisBottom(x), x.ticks(6)), counted(d3.axisLeft(y), ticks),
    ["graphs", "patterns (logarithmic)"]);
  byId("supports").append(svg,
    chartTable(["Support", "Patterns"], counts.map((count, i) => [rangeOf(i), count])));
}
