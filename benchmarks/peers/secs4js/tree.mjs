// Decoding to a tree of secs4js and reading every value of it.
import { stack } from "../../../tests/interop/peers/secs4js/stack.mjs";

const { L, B, BOOLEAN, A } = stack.SecsItemType;

// The sum of what is read; of a text or of bytes it is the length, the first and the last one.
export function readTree(item) {
  const value = item.value;
  switch (item.type) {
    case L: {
      let sum = 0;
      for (const child of value) sum += readTree(child);
      return sum;
    }
    case A:
      return value.length === 0 ? 0 : value.length + value.charCodeAt(0) + value.charCodeAt(value.length - 1);
    case B:
      return value.length === 0 ? 0 : value.length + value[0] + value[value.length - 1];
    case BOOLEAN: {
      let sum = 0;
      for (const one of Array.isArray(value) ? value : [value]) sum += one ? 1 : 0;
      return sum;
    }
    default: {
      if (!Array.isArray(value)) return Number(value);
      let sum = 0;
      for (const one of value) sum += Number(one);
      return sum;
    }
  }
}

export const decode = (body) => stack.Secs2ItemParser.fromBuffer(body).item;
