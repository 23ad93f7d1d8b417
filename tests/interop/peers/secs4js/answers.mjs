// What primaries are answered with: what was told, else what the standard says.
import { decodeBody } from "./link.mjs";

const identity = (equipment) => (equipment ? "0102" + "410450454552" + "4103312e30" : "0100");

export class Answers {
  constructor(equipment) {
    this.equipment = equipment;
    this.told = new Map();
    this.useDefaults = true;
  }

  tell(command) {
    this.told.set(`S${command.stream}F${command.function}`, { ...command });
  }

  // { stream, function, body, delay } for this primary; undefined: it is not answered.
  find(message) {
    const name = `S${message.stream}F${message.func}`;
    const told = this.told.get(name);
    if (told) {
      if (told.count !== undefined && --told.count <= 0) this.told.delete(name);
      const [stream, func] = told.reply ?? [message.stream, message.func + 1];
      const body = told.body === "echo" ? message.body : decodeBody(told.body ?? "");
      return { stream, function: func, body, delay: told.delay ?? 0 };
    }
    if (!this.useDefaults || !message.wBit) return undefined;
    const known = {
      S1F1: identity(this.equipment),
      S1F13: "0102" + "210100" + identity(this.equipment),
      S5F1: "210100",
      S6F11: "210100",
    };
    const func = known[name] === undefined ? 0 : message.func + 1;
    return { stream: message.stream, function: func, body: decodeBody(known[name] ?? ""), delay: 0 };
  }
}
