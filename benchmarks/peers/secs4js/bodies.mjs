// The bodies of the race, built from plain values by the item classes of secs4js.
import { stack } from "../../../tests/interop/peers/secs4js/stack.mjs";

const { Secs2ItemAscii, Secs2ItemBinary, Secs2ItemBoolean, Secs2ItemList, Secs2ItemNumeric, SecsItemType } = stack;
const list = (...items) => new Secs2ItemList(items);
const ascii = (text) => new Secs2ItemAscii(text);
const number = (type, value) => new Secs2ItemNumeric(type, value);
const { U1, U4, I2, F8 } = SecsItemType;

const lots = ["LOT-2026-0101-000001", "LOT-2026-0101-000002"];
const someBytes = Buffer.from([0x00, 0x7f, 0x80, 0xff]);

function report(id, lot) {
  return list(
    number(U4, id),
    list(
      ascii(lot),
      number(U4, 4000000001),
      number(F8, 1234.5678),
      number(I2, -12345),
      new Secs2ItemBoolean(true),
      new Secs2ItemBinary(someBytes),
      ascii("CHAMBER1"),
      number(U1, 200),
    ),
  );
}

const numbers = Array.from({ length: 10000 }, (_, i) => i * 429496);
const bigArray = Array.from({ length: 1000000 }, (_, i) => i * 4294);
const alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";
const text = alphabet.repeat(Math.ceil((1 << 20) / 26)).slice(0, 1 << 20);
const leaves = Array.from({ length: 101 }, (_, i) => `LEAF${String(i).padStart(4, "0")}`);

function nested() {
  let body = list(ascii(leaves[98]), ascii(leaves[99]), ascii(leaves[100]));
  for (let depth = 48; depth >= 0; --depth) {
    body = list(ascii(leaves[2 * depth]), ascii(leaves[2 * depth + 1]), body);
  }
  return body;
}

export const builders = {
  w1a: () => list(number(U4, 1001), number(U4, 2002), list(report(3001, lots[0]), report(3002, lots[1]))),
  w1b: () => new Secs2ItemList(numbers.map((value) => number(U4, value))),
  w1c: () => number(U4, bigArray),
  w1d: () => ascii(text),
  w1e: nested,
};
