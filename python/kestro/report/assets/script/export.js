// The selection, as files.

function save(name, type, text) {
  const address = URL.createObjectURL(new Blob([text], { type }));
  const link = make("a", { href: address, download: name });
  document.body.append(link);
  link.click();
  link.remove();
  setTimeout(() => URL.revokeObjectURL(address), 1000);
}

const quoted = (value) => {
  const text = String(value ?? "");
  return /[",\r\n]/.test(text) ? `"${text.replaceAll('"', '""')}"` : text;
};

function csv() {
  const names = ["id", "size", "support", "fraction", "vertices", "closed", "maximal",
    ofMolecules ? "smarts" : "edges"];
  for (const { name } of data.scores ?? [])
    names.push(...["inside", "outside", "odds_ratio", "growth_rate", "minus_log10_p"]
      .map((what) => `${what} ${name}`));
  const rows = selection.patterns.map((pattern) => {
    const row = [pattern.id, pattern.size, pattern.support,
      pattern.support / data.graphs, pattern.vertices.length,
      pattern.closed, pattern.maximal, textOf(pattern)];
    (data.scores ?? []).forEach((_, which) => {
      const { inside, outside, odds, growth, p } = scoreOf(pattern, which);
      row.push(inside, outside, odds, growth, p);
    });
    return row;
  });
  return [names, ...rows].map((row) => row.map(quoted).join(",") + "\r\n").join("");
}

// SMARTS and name, as programs of chemistry read them.
function smartsFile() {
  return selection.patterns.map((p) => `${p.smarts}\t${p.id}\n`).join("");
}

function startExport() {
  byId("export-csv").addEventListener("click", () =>
    save("patterns.csv", "text/csv", csv()));
  byId("export-smarts")?.addEventListener("click", () =>
    save("patterns.smarts", "text/plain", smartsFile()));
}
