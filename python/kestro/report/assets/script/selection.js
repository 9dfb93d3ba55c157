// Which patterns are selected by the filters, in which order.

const selection = {
  filters: {}, // by name, a function of a pattern that says whether it stays
  key: data.scores ? "score" : "support",
  isDescending: true,
  patterns: [],
  changed: [], // functions to be called
};

const keys = {
  id: (pattern) => pattern.size * 2 ** 32 + pattern.number,
  size: (pattern) => pattern.size,
  support: (pattern) => pattern.support,
  score: (pattern) => scoreOf(pattern, scoredClass()).p,
  odds: (pattern) => {
    const { odds } = scoreOf(pattern, scoredClass());
    return Number.isNaN(odds) ? -Infinity : odds;
  },
};

// The class that is looked at, by number.
function scoredClass() {
  const choice = byId("volcano-class");
  return choice ? Number(choice.value) : 0;
}

function select() {
  const tests = Object.values(selection.filters);
  const chosen = patterns.filter((pattern) => tests.every((test) => test(pattern)));
  const key = keys[selection.key];
  const values = new Map(chosen.map((pattern) => [pattern, key(pattern)]));
  const sign = selection.isDescending ? -1 : 1;
  selection.patterns = chosen.sort((a, b) => {
    const [x, y] = [values.get(a), values.get(b)];
    return (x === y ? 0 : x < y ? -sign : sign) || a.at - b.at;
  });
  for (const tell of selection.changed) tell();
}

function setFilter(name, test) {
  if (test) selection.filters[name] = test;
  else delete selection.filters[name];
}

// Reads the fields of the form, but for the SMARTS.
function readFilters() {
  bound("size", (pattern) => pattern.size);
  bound("support", (pattern) => pattern.support);
  bound("score", (pattern) => scoreOf(pattern, scoredClass()).p);
  const id = byId("by-id").value.trim();
  setFilter("id", id && ((pattern) =>
    places.has(id) ? pattern.id === id : pattern.id.startsWith(id)));
  const wanted = byId("by-label").value.split(",").map((x) => x.trim()).filter(Boolean);
  const each = wanted.map(labelTest);
  setFilter("labels", each.length > 0 && ((p) => each.every((test) => test(p))));
  const direction = byId("direction")?.value;
  setFilter("direction", direction && ((pattern) => {
    const { growth } = scoreOf(pattern, scoredClass());
    return direction === "more" ? growth > 1 : growth < 1;
  }));
}

function bound(name, valueOf) {
  const [from, to] = [byId(`${name}-from`), byId(`${name}-to`)];
  const low = from && from.value !== "" ? Number(from.value) : -Infinity;
  const high = to && to.value !== "" ? Number(to.value) : Infinity;
  const isSet = low > -Infinity || high < Infinity;
  setFilter(name, isSet && ((p) => low <= valueOf(p) && valueOf(p) <= high));
}

// A label that there is means itself; other words, all labels that hold them.
function labelTest(word) {
  const [vertices, edges] = [data.vertex_labels, data.edge_labels].map((labels) => {
    const exact = data.vertex_labels.includes(word) || data.edge_labels.includes(word);
    const low = word.toLowerCase();
    return new Set(labels.flatMap((label, i) =>
      (exact ? label === word : label.toLowerCase().includes(low)) ? [i] : []));
  });
  return (pattern) =>
    pattern.vertices.some((label) => vertices.has(label)) ||
    pattern.edges.some((label, i) => i % 3 === 2 && edges.has(label));
}

// Whether a SMARTS asks for hydrogens, neighbours, valence or rings, which a fragment
// has otherwise than the molecules around it.  Of letters in brackets, those of
// symbols of elements are none of these, nor is an H that is the atom.
function asksOfFragment(smarts) {
  return (smarts.match(/\[[^\]]*\]|@/g) ?? []).some((part) =>
    part === "@" || (!/^\[\d*H[+-]?\d*\]$/.test(part) &&
      /(H(?![efgos])|X(?!e)|D(?![bsy])|R(?![abefghnu])|v|(?<![A-Z])[hrx])/.test(part)));
}

let asked = 0; // searches for a SMARTS; the last one counts

async function searchSmarts() {
  const smarts = byId("by-smarts").value.trim();
  const told = byId("smarts-told");
  const own = ++asked;
  byId("smarts-hint").classList.toggle("note", asksOfFragment(smarts));
  if (!smarts) {
    told.textContent = "";
    setFilter("smarts", null);
    select();
    return;
  }
  told.textContent = "Looking for the substructure …";
  let answer;
  try {
    answer = await containing(smarts, () => own === asked);
  } catch (error) {
    told.textContent = `RDKit did not start: ${error}`;
    return;
  }
  if (own !== asked) return;
  if (!answer.found) {
    told.textContent = "This is no SMARTS; the selection is as it was.";
    return;
  }
  told.textContent = answer.unread
    ? `${answer.unread} patterns cannot be searched: SMILES has no such atoms.`
    : "";
  setFilter("smarts", (pattern) => answer.found.has(pattern.at));
  select();
}
