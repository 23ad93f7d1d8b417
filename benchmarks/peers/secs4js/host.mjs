// An active HSMS-SS host that keeps requests open.
import { readFileSync } from "node:fs";
import path from "node:path";
import { stack } from "../../../tests/interop/peers/secs4js/stack.mjs";
import { decode, readTree } from "./tree.mjs";

const patience = 10000; // milliseconds

export const messages = {
  a: { stream: 1, function: 1 },
  b: { stream: 2, function: 101, body: "w1a" },
  w3a: { stream: 7, function: 3, body: "w3a" },
  w3b: { stream: 7, function: 3, body: "w3b" },
};

export async function connect(port) {
  const host = new stack.HsmsActiveCommunicator({ ip: "127.0.0.1", port, deviceId: 0, isEquip: false });
  host.on("error", (error) => {
    throw error;
  });
  const late = setTimeout(() => {
    throw new Error("the link was not selected");
  }, patience);
  await host.open();
  await host.untilConnected();
  clearTimeout(late);
  return host;
}

export function bodyOf(message, folder) {
  return message.body ? decode(readFileSync(path.join(folder, `${message.body}.bin`))) : null;
}

// Keeps `depth` requests open on each host; times in microseconds of those that began and ended in time.
async function run(hosts, depth, seconds, message, body) {
  const begin = performance.now() + 1000 * Math.max(0.3, seconds / 3);
  const end = begin + 1000 * seconds;
  const times = [];
  let read = 0;
  async function one(host) {
    for (;;) {
      const sent = performance.now();
      if (sent >= end) return;
      const reply = await host.send(message.stream, message.function, true, body);
      if (reply.body) read += readTree(reply.body);
      const done = performance.now();
      if (sent >= begin && done < end) times.push(1000 * (done - sent));
    }
  }
  await Promise.all(hosts.flatMap((host) => Array.from({ length: depth }, () => one(host))));
  if (times.length === 0 || !Number.isFinite(read)) throw new Error("no round trip in the time");
  times.sort((left, right) => left - right);
  return times;
}

export async function measureRoundTrips(hosts, depth, seconds, message, body) {
  const times = await run(hosts, depth, seconds, message, body);
  const quantile = (part) => times[Math.floor((times.length - 1) * part)];
  return { p50_us: quantile(0.5), p99_us: quantile(0.99), per_s: times.length / seconds, count: times.length };
}
