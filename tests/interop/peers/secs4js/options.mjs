// The command line of a peer.
import { parseArgs } from "node:util";

const seconds = ["t1", "t2", "t3", "t4", "t5", "t6", "t7", "t8", "linktest"];

export function readOptions() {
  const texts = ["role", "transport", "mode", "address", "port", "device-file", "baud", "device"];
  const options = { "r-bit": { type: "boolean", default: false } };
  for (const name of [...texts, ...seconds]) options[name] = { type: "string" };
  const { values } = parseArgs({ options });
  const choice = (name, words) => {
    if (!words.includes(values[name])) throw new Error(`--${name} must be one of ${words}`);
    return values[name];
  };
  const result = {
    equipment: choice("role", ["host", "equipment"]) === "equipment",
    transport: choice("transport", ["hsms", "secs1tcp", "serial"]),
    address: values.address ?? "127.0.0.1",
    port: Number(values.port ?? 0),
    deviceFile: values["device-file"],
    baud: Number(values.baud ?? 9600),
    device: Number(values.device ?? 0),
    setRBit: values["r-bit"],
    times: {},
  };
  result.active = result.transport === "serial" || choice("mode", ["active", "passive"]) === "active";
  for (const name of seconds) if (values[name] !== undefined) result.times[name] = Number(values[name]);
  return result;
}
