#!/usr/bin/env node
// tvplot's DWG bridge: node --liftoff-only dwg2dxf.mjs [-y] -o OUT.dxf IN.dwg
// LibreDWG (the npm package @mlightcad/libredwg-web, GPL-3.0, run here as a program of its own)
// reads the DWG and writes a DXF of the same version; tvplot then reads that DXF as any other.
// Beside OUT it writes OUT's name with .json: the converter's name, the repairs made and what
// could not be carried over. Exit: 0 written, 2 unreadable DWG, 3 partial output, 1 usage.
// Only APIs that node 18 has too are used.
import { readFileSync, writeFileSync, renameSync } from 'node:fs';
import { dirname, join } from 'node:path';
import { fileURLToPath } from 'node:url';

const args = process.argv.slice(2).filter(a => a !== '-y');
const o = args.indexOf('-o');
if (o < 0 || args.length !== 3 || o === 2) {
  process.stderr.write('usage: dwg2dxf.mjs [-y] -o OUT.dxf IN.dwg\n');
  process.exit(1);
}
const out = args[o + 1], input = args.find((a, i) => i !== o && i !== o + 1);
const reportPath = out.replace(/\.dxf$/i, '') + '.json';

const pkgDir = join(dirname(fileURLToPath(import.meta.url)), 'node_modules', '@mlightcad', 'libredwg-web');
const pkgVersion = JSON.parse(readFileSync(join(pkgDir, 'package.json'), 'latin1')).version;
const wasmDir = join(pkgDir, 'wasm');
const { default: createModule } = await import(join(wasmDir, 'libredwg-web.js'));

// LibreDWG's own messages go to stderr, the first few only (damaged text can give thousands).
let logged = 0;
const log = s => { if (logged++ < 20) process.stderr.write(s + '\n'); };
const m = await createModule({ locateFile: f => join(wasmDir, f), print: log, printErr: log });

const dwg = readFileSync(input);
m.FS.writeFile('/in.dwg', dwg);
// R13 and R14 keep a layer's off state where LibreDWG does not read it: every layer comes out on.
const layerStatesKnown = !/^AC101[0-4]/.test(dwg.toString('latin1', 0, 6));
// One LibreDWG read and write. Its status does not include the read's non-critical errors.
const err = m.dwg_write_dxf('/in.dwg', '/out.dxf');
if (!m.FS.analyzePath('/out.dxf', false).exists) {
  process.stderr.write(`LibreDWG could not read ${input} (error ${err})\n`);
  process.exit(2);
}
const written = m.FS.readFile('/out.dxf');
const dxf = Buffer.from(written.buffer, written.byteOffset, written.length);   // a view, not a copy
m.FS.unlink('/out.dxf');
if (err !== 0 || !/\n\s*0\r?\nEOF\r?\n?$/.test(dxf.toString('latin1', Math.max(0, dxf.length - 16)))) {
  process.stderr.write(`LibreDWG wrote an incomplete DXF (error ${err})\n`);
  process.exit(3);
}

// A second read gives what the DXF writer gets wrong or leaves out. Only the object kinds are
// looked at, and the LAYER records; the typed database of the package is not built.
// Objects of a kind LibreDWG cannot decode are UNKNOWN_ENT/UNKNOWN_OBJ, and its DXF writer skips them.
const TYPE_LAYER = 51, UNKNOWN_ENT = 65534, UNKNOWN_OBJ = 65535;
const read = m.dwg_read_file('/in.dwg');
const layerOff = new Map();   // handle (upper-case hex) → off
const dropped = { entities: {}, objects: {} };   // kind name → count the DXF writer cannot write
const nameOf = s => /^[A-Za-z0-9_$*]{1,40}$/.test(s) ? s : '?';
if (read.data) {
  const n = m.dwg_get_num_objects(read.data);
  for (let i = 0; i < n; i++) {
    const obj = m.dwg_get_object(read.data, i);
    if (!obj) continue;
    const type = m.dwg_object_get_fixedtype(obj);
    if (type === TYPE_LAYER) {
      const tio = m.dwg_object_to_object_tio(obj);
      const handle = m.dwg_object_get_handle_object(obj).value.toString(16).toUpperCase();
      layerOff.set(handle, !!m.dwg_dynapi_entity_value(tio, 'off').data);
    } else if (type === UNKNOWN_ENT || type === UNKNOWN_OBJ) {
      const kind = dropped[type === UNKNOWN_ENT ? 'entities' : 'objects'];
      const name = nameOf(m.dwg_object_get_dxfname(obj));
      kind[name] = (kind[name] || 0) + 1;
    }
  }
}
const ERRORS = ['WRONGCRC', 'NOTYETSUPPORTED', 'UNHANDLEDCLASS', 'INVALIDTYPE', 'INVALIDHANDLE', 'INVALIDEED',
  'VALUEOUTOFBOUNDS', 'CLASSESNOTFOUND', 'SECTIONNOTFOUND', 'PAGENOTFOUND', 'INTERNALERROR', 'INVALIDDWG',
  'IOERROR', 'OUTOFMEM'];
const readProblems = ERRORS.filter((_, bit) => read.error & (1 << bit));

// Repairs of this LibreDWG build's DXF writer, on the text as written (latin1 keeps every byte):
// 1. every LAYER's colour is written negative (= off): the sign is taken from the layer's off flag;
// 2. lost true colours are written as 420=0 (black): dropped, so the ACI colour (62) applies.
// 3. a line break inside a value (LibreDWG writes CRLF, so a bare LF or CR is in a value: seen in
//    damaged MTEXT) would shift every later pair: it becomes a space.
// Records written with no group codes at all (e.g. ACAD_TABLE from R2007 on) are counted as stubs.
const text = dxf.toString('latin1');
const eol = text.indexOf('\r\n') >= 0 ? '\r\n' : '\n';
const lines = text.split(eol);
const kept = [];
const stubs = {};
let section = '', rec = '', recPairs = 0, handle = '', layers = 0, colours = 0, breaks = 0, version = '';
for (let i = 0; i + 1 < lines.length; i += 2) {
  const code = lines[i].trim();
  let val = lines[i + 1];
  if (/[\r\n]/.test(val)) { val = val.replace(/[\r\n]/g, ' '); breaks++; }
  const v = val.trim();
  if (code === '0') {
    if (recPairs === 0 && rec && section !== 'HEADER' && !/^(SECTION|ENDSEC|TABLE|ENDTAB|SEQEND|ENDBLK|EOF)$/.test(rec))
      stubs[rec] = (stubs[rec] || 0) + 1;
    rec = v; handle = ''; recPairs = 0;
  } else {
    recPairs++;
    if (code === '2' && rec === 'SECTION') section = v;
    else if (code === '5') handle = v.toUpperCase();
    else if (code === '999' && !version) version = v;
    else if (code === '62' && section === 'TABLES' && rec === 'LAYER' && layerOff.has(handle)) {
      const want = Math.abs(+v) * (layerOff.get(handle) ? -1 : 1);
      if (want !== +v) { val = val.replace(v, String(want)).padStart(val.length); layers++; }
    } else if (code === '420' && v === '0' && (section === 'ENTITIES' || section === 'BLOCKS')) { colours++; continue; }
  }
  kept.push(lines[i], val);
}
if (lines.length % 2) kept.push(lines[lines.length - 1]);

// "LibreDWG 0.13.3.7825.246_0c9ab_dirty": the build suffix says nothing to a user.
const libredwg = (/^LibreDWG\s+(\d+\.\d+(?:\.\d+)?)/.exec(version) || [])[1];
const report = {
  converter: `LibreDWG${libredwg ? ' ' + libredwg : ''} (@mlightcad/libredwg-web ${pkgVersion})`,
  readProblems,
  repairs: { layerOnOff: layers, trueColours: colours, lineBreaks: breaks },
  layerStatesKnown,
  dropped,
  stubs,
};
writeFileSync(reportPath, JSON.stringify(report) + '\n');
writeFileSync(out + '.part', Buffer.from(kept.join(eol), 'latin1'));
renameSync(out + '.part', out);
process.exit(0);
