// Times of decoding and encoding, in nanoseconds an operation.
import { readFileSync } from "node:fs";
import path from "node:path";
import { builders } from "./bodies.mjs";
import { decode, readTree } from "./tree.mjs";

const warmUp = 100; // milliseconds
const measured = 300;
let sink = 0; // keeps what is computed from being left out

function nanoseconds(operation) {
  let times = 0;
  const start = performance.now();
  do {
    sink += operation();
    ++times;
  } while (performance.now() - start < warmUp);
  const each = (performance.now() - start) / times;
  const count = Math.max(1, Math.round(measured / each));
  const begin = process.hrtime.bigint();
  for (let i = 0; i < count; ++i) sink += operation();
  return Number(process.hrtime.bigint() - begin) / count;
}

// BOOLEAN true may be any byte but 0: this stack writes 255.
function same(ours, wanted) {
  if (ours.length !== wanted.length) return false;
  for (let i = 0; i < ours.length; ++i) if (ours[i] !== wanted[i] && ours[i] !== 255) return false;
  return readTree(decode(ours)) === readTree(decode(wanted));
}

export function measureCodec(folder) {
  const figures = {};
  for (const [name, build] of Object.entries(builders)) {
    const body = readFileSync(path.join(folder, `${name}.bin`));
    const ready = build();
    if (!same(ready.toBuffer(), body)) throw new Error(`${name} is encoded in another way`);
    figures[`${name}_decode_ns`] = nanoseconds(() => readTree(decode(body)));
    figures[`${name}_encode_ns`] = nanoseconds(() => build().toBuffer().length);
    figures[`${name}_encode_ready_ns`] = nanoseconds(() => ready.toBuffer().length);
    if (name === "w1a") figures.w1a_sml_ns = nanoseconds(() => ready.toSml().length);
  }
  if (!Number.isFinite(sink)) throw new Error("nothing was computed");
  return figures;
}
