// RDKit, unpacked and started when it is first needed.

const hasStructures = byId("rdkit") !== null;
const READING = JSON.stringify({
  sanitize: false, kekulize: false, removeHs: false, assignStereo: false,
});
const HIGHLIGHT = [1, 0.78, 0.25];
let starting = null;

function chemistry() {
  starting ??= start();
  return starting;
}

async function start() {
  const bytes = Uint8Array.from(atob(byId("rdkit").textContent), (c) => c.charCodeAt(0));
  const stream = new Blob([bytes]).stream().pipeThrough(new DecompressionStream("gzip"));
  const wasm = await new Response(stream).arrayBuffer();
  // Its own way is to fetch a file.
  const instantiateWasm = (imports, done) => {
    WebAssembly.instantiate(wasm, imports).then(({ instance, module }) =>
      done(instance, module));
    return {};
  };
  const silent = () => {}; // what is no SMARTS is told beside the field
  return initRDKitModule({ instantiateWasm, print: silent, printErr: silent });
}

// The SMILES of what the SMARTS of a pattern or a graph says; null if it has none.
function smilesOf(smarts) {
  return smarts.replace(/\[[^\]]*\]/g, (atom) => data.atoms[atom]);
}

// Draws a molecule; atoms and bonds are those to be marked.
function moleculeSvg(rdkit, smarts, size, atoms = [], bonds = []) {
  const molecule = rdkit.get_mol(smilesOf(smarts), READING);
  if (!molecule) return null;
  try {
    return parsed(molecule.get_svg_with_highlights(JSON.stringify({
      width: size[0], height: size[1], atoms, bonds, atomColourPalette: data.colours,
      highlightColour: HIGHLIGHT, kekulize: false, addChiralHs: false,
      wedgeBonds: false, noFreetype: true, clearBackground: false, padding: 0.06,
      fixedBondLength: 26, minFontSize: 11, fillHighlights: true, highlightBondWidthMultiplier: 14,
    })));
  } finally {
    molecule.delete();
  }
}

// Returns the places of the patterns that contain what a SMARTS says, null if it
// says nothing, and how many could not be read.  Gives way to others in between;
// returns undefined once it is no longer wanted.
async function containing(smarts, isWanted) {
  const rdkit = await chemistry();
  const query = rdkit.get_qmol(smarts);
  if (!query) return { found: null, unread: 0 };
  const found = new Set();
  let unread = 0;
  try {
    for (const pattern of patterns) {
      if (pattern.at % 500 === 499) await new Promise((done) => setTimeout(done));
      if (!isWanted()) return undefined;
      const molecule = rdkit.get_mol(smilesOf(pattern.smarts), READING);
      if (!molecule) {
        unread += 1;
        continue;
      }
      if (molecule.get_substruct_match(query) !== "{}") found.add(pattern.at);
      molecule.delete();
    }
  } finally {
    query.delete();
  }
  return { found, unread };
}
