// One communicator of secs4js, made as the options say.
import { stack } from "./stack.mjs";

// System bytes that were asked for are used once, by the message that is sent next. As equipment the R-bit of
// SECS-I is set when that is asked for: the stack itself leaves it clear.
function extended(Communicator, setRBit) {
  return class extends Communicator {
    wantedSystem = undefined;

    getNextSystemBytes() {
      const system = this.wantedSystem ?? super.getNextSystemBytes();
      this.wantedSystem = undefined;
      return system;
    }

    createMessage(stream, func, wBit, body, systemBytes) {
      if (!setRBit) return super.createMessage(stream, func, wBit, body, systemBytes);
      return new stack.Secs1Message(stream, func, wBit, body, systemBytes, this.deviceId, true);
    }

    dropConnection() {
      (this.socket ?? this.stream)?.destroy();
    }
  };
}

function communicatorOf(options) {
  if (options.transport === "serial") return stack.Secs1SerialCommunicator;
  if (options.transport === "secs1tcp") {
    return options.active ? stack.Secs1OnTcpIpActiveCommunicator : stack.Secs1OnTcpIpPassiveCommunicator;
  }
  return options.active ? stack.HsmsActiveCommunicator : stack.HsmsPassiveCommunicator;
}

export function makeLink(options) {
  const config = {
    ip: options.address,
    port: options.port,
    path: options.deviceFile,
    baudRate: options.baud,
    deviceId: options.device,
    isEquip: options.equipment,
    isMaster: options.equipment, // the equipment wins when both sides want the line
    timeoutRebind: 1,
    log: { enabled: false },
  };
  for (const [name, value] of Object.entries(options.times)) {
    if (name === "linktest") config.linkTestInterval = value > 0 ? value * 1000 : 2 ** 31 - 1;
    else config[`timeout${name.toUpperCase()}`] = value;
  }
  const setRBit = options.setRBit && options.equipment && options.transport !== "hsms";
  return new (extended(communicatorOf(options), setRBit))(config);
}

// The items of a body, by the decoder of the stack; none for an empty body.
export function decodeBody(hex) {
  return hex === "" ? null : stack.Secs2ItemParser.fromBuffer(Buffer.from(hex, "hex")).item;
}

// What the encoder of the stack makes of items.
export function encodeBody(item) {
  return item ? item.toBuffer().toString("hex") : "";
}
