// The table, a page of it at a time.

const table = {
  page: 0,
  rows: matchMedia("(max-width: 40rem)").matches ? 10 : 25,
  chosen: null,
};
const PRINTED_ROWS = 100;

// Of what was read without its lattice, no kind is known.
const tellsKinds = patterns.some((pattern) => pattern.closed !== null);

const heads = [
  { name: "Drawing" },
  { name: "Id", key: "id" },
  { name: "Edges", key: "size", isNumber: true },
  { name: "Support", key: "support", isNumber: true },
  ...(data.scores
    ? [
        { name: "−log10 p", key: "score", isNumber: true },
        { name: "Odds ratio", key: "odds", isNumber: true },
      ]
    : []),
  ...(tellsKinds ? [{ name: "Kind" }] : []),
  { name: ofMolecules ? "SMARTS" : "Edges and labels" },
];

// display: block takes roles away, so they are said.
function showHead() {
  const row = make("tr", { role: "row" });
  for (const { name, key, isNumber } of heads) {
    const head = make("th", {
      scope: "col", role: "columnheader",
      class: (isNumber ? "number" : "") + (key ? "" : " plain"),
    });
    if (key) {
      const isSorted = selection.key === key;
      if (isSorted)
        head.setAttribute("aria-sort", selection.isDescending ? "descending" : "ascending");
      const arrow = isSorted ? (selection.isDescending ? " ▼" : " ▲") : "";
      head.append(make("button",
        { type: "button", "data-key": key, onclick: () => sortBy(key) },
        name, make("span", { "aria-hidden": "true" }, arrow)),
        make("span", { class: "printed", "aria-hidden": "true" }, name + arrow));
    } else {
      head.append(name);
    }
    row.append(head);
  }
  const focused = document.activeElement?.dataset?.key;
  document.querySelector("#patterns thead").replaceChildren(row);
  if (focused) row.querySelector(`[data-key=${focused}]`)?.focus();
}

function sortBy(key) {
  selection.isDescending = selection.key === key ? !selection.isDescending : key !== "id";
  selection.key = key;
  select();
}

function showRows() {
  const first = table.page * table.rows;
  const shown = selection.patterns.slice(first, first + table.rows);
  document.querySelector("#patterns tbody").replaceChildren(...shown.map(rowOf));
  const pages = Math.max(1, Math.ceil(selection.patterns.length / table.rows));
  byId("page-told").textContent = `Page ${table.page + 1} of ${pages}`;
  byId("previous").disabled = table.page === 0;
  byId("next").disabled = table.page + 1 >= pages;
}

function rowOf(pattern) {
  const number = (name, ...text) =>
    make("td", { role: "cell", class: "number", "data-name": name }, ...text);
  const cells = [
    make("td", { role: "cell", class: "drawn" }, picture(pattern)),
    make("td", { role: "cell", "data-name": "Id" }, linkTo(pattern)),
    number("Edges", String(pattern.size)),
    number("Support", `${whole(pattern.support)} (${share(pattern.support)})`),
  ];
  if (data.scores) {
    const { p, odds } = scoreOf(pattern, scoredClass());
    cells.push(number("−log10 p", p.toFixed(2)), number("Odds ratio", decimal(odds)));
  }
  if (tellsKinds) {
    const kind = kindOf(pattern);
    cells.push(make("td", { role: "cell", "data-name": kind ? "Kind" : null }, kind));
  }
  cells.push(make("td", { role: "cell", class: "text" }, textOf(pattern)));
  const isChosen = table.chosen === pattern;
  return make("tr", {
    role: "row", class: isChosen ? "chosen" : null, "data-id": pattern.id,
  }, ...cells);
}

function linkTo(pattern) {
  return make("a", {
    href: `#${pattern.id}`,
    "aria-current": table.chosen === pattern ? "true" : null,
  }, pattern.id);
}

// Nothing where it is unknown, as of the largest patterns that a run looked for.
function kindOf(pattern) {
  if (pattern.maximal) return "maximal";
  if (pattern.closed) return "closed";
  return pattern.closed === null ? "" : "not closed";
}

function showSelection() {
  table.page = 0;
  const [selected, all] = [selection.patterns.length, patterns.length];
  byId("count").textContent = `${whole(selected)} of ${whole(all)} patterns selected`;
  showHead();
  showRows();
}

function turnPage(step) {
  table.page += step;
  showRows();
}

function startTable() {
  const body = document.querySelector("#patterns");
  body.setAttribute("role", "table");
  body.tHead.setAttribute("role", "rowgroup");
  body.tBodies[0].setAttribute("role", "rowgroup");
  byId("previous").addEventListener("click", () => turnPage(-1));
  byId("next").addEventListener("click", () => turnPage(1));
  selection.changed.push(showSelection);
  const rows = table.rows;
  byId("kinds").hidden = !tellsKinds;
  addEventListener("beforeprint", () => showMany(PRINTED_ROWS));
  addEventListener("afterprint", () => showMany(rows));
}

// Paper has room for more rows.
function showMany(rows) {
  table.page = Math.floor((table.page * table.rows) / rows);
  table.rows = rows;
  showRows();
}
