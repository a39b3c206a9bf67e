// Does PowerShell's grammar take these scripts? powershell-syntax.mjs FILE… prints N:LINE:COLUMN: TEXT for each fault in the
// Nth file, from 0.
// Exit status: 0 none, 1 faults, 3 the parser is not there (scripts/deps.sh fetches it), which is told.
import { readFileSync } from "node:fs";
import { createRequire } from "node:module";
import { setFlagsFromString } from "node:v8";

setFlagsFromString("--liftoff-only"); // The optimising compiler takes 6 s for the grammar, this one 0.1 s.

const require = createRequire(new URL("../build/deps/powershell-grammar/package.json", import.meta.url));
const SHOWN = 40; // characters of what was not understood

async function newParser() {
  const { Parser, Language } = require("web-tree-sitter");
  await Parser.init();
  const parser = new Parser();
  parser.setLanguage(await Language.load(require.resolve("tree-sitter-powershell/tree-sitter-powershell.wasm")));
  return parser;
}

// Windows PowerShell reads UTF-16 too, behind its byte order mark.
function scriptIn(bytes) {
  const encoding = bytes[0] === 0xff && bytes[1] === 0xfe ? "utf16le" : "utf8";
  return bytes.toString(encoding).replace(/^\uFEFF/, "");
}

// The grammar wants a statement behind a param block and in braces, PowerShell does not: the only one is missing.
function isNeedless({ isMissing, parent }) {
  const list = parent?.parent;
  return isMissing && list?.type === "statement_list" && list.text === "";
}

// The outermost faults: what stands inside of one says no more.
function* faults(node) {
  if (isNeedless(node)) return;
  if (node.isError || node.isMissing) yield node;
  else if (node.hasError) for (const child of node.children) yield* faults(child);
}

function textOf(node) {
  const [line] = node.text.trim().split(/\r?\n/);
  return node.isMissing ? `${node.type} is missing` : `not understood: ${line.slice(0, SHOWN)}`;
}

let parser;
try {
  parser = await newParser();
} catch (error) {
  console.error(`the parser of PowerShell is not there: ${error.message.split("\n")[0]}`);
  process.exit(3);
}
let found = 0;
for (const [n, file] of process.argv.slice(2).entries()) {
  const source = scriptIn(readFileSync(file));
  for (const node of faults(parser.parse(source).rootNode)) {
    const { row, column } = node.startPosition;
    console.log(`${n}:${row + 1}:${column + 1}: ${textOf(node)}`);
    ++found;
  }
}
process.exit(found === 0 ? 0 : 1);
