// A host or an equipment on secs4js, driven by lines of JSON: ../README.md tells the interface.
import { createInterface } from "node:readline";
import { Answers } from "./answers.mjs";
import { decodeBody, encodeBody, makeLink } from "./link.mjs";
import { readOptions } from "./options.mjs";

const options = readOptions();
const link = makeLink(options);
const answers = new Answers(options.equipment);
const hsms = options.transport === "hsms";

function emit(event, fields = {}) {
  process.stdout.write(JSON.stringify({ event, ...fields }) + "\n");
}

function fieldsOf(message) {
  return {
    stream: message.stream,
    function: message.func,
    w: message.wBit,
    system: message.systemBytes,
    device: message.deviceId,
    body: encodeBody(message.body),
  };
}

function report(error, fields = {}) {
  emit("error", { ...fields, text: error instanceof Error ? error.message : String(error) });
}

function received(message) {
  emit("received", fieldsOf(message));
  if (message.func % 2 === 0) return;
  const answer = answers.find(message);
  if (!answer) return;
  const send = () => link.reply(message, answer.stream, answer.function, answer.body).catch(report);
  if (answer.delay > 0) setTimeout(send, answer.delay * 1000);
  else send();
}

// The promise of the stack; system bytes that were asked for are for this message alone.
function sendWith(command, wBit) {
  const body = decodeBody(command.body ?? "");
  link.wantedSystem = command.system;
  const outcome = link.send(command.stream, command.function, wBit, body);
  link.wantedSystem = undefined;
  return outcome;
}

async function request(command) {
  try {
    emit("reply", { id: command.id, ...fieldsOf(await sendWith(command, true)) });
  } catch (error) {
    if (/^T3 Timeout/.test(error.message)) emit("timeout", { id: command.id });
    else report(error, { id: command.id });
  }
}

async function linktest() {
  await link.sendLinkTestReq();
  emit("linktest");
}

async function quit() {
  await Promise.race([link.close().catch(() => {}), new Promise((done) => setTimeout(done, 1000))]);
  process.exit(0);
}

const actions = {
  request,
  send: (command) => sendWith(command, false),
  answer: (command) => answers.tell(command),
  answer_default: (command) => (answers.useDefaults = command.on),
  linktest: hsms ? linktest : undefined,
  separate: hsms ? () => link.sendSeparateReq() : undefined,
  disconnect: () => link.dropConnection(),
  quit,
};

function perform(line) {
  let command;
  try {
    command = JSON.parse(line);
    const action = actions[command.do];
    if (!action) emit("unsupported", { do: command.do });
    else Promise.resolve(action(command)).catch(report);
  } catch (error) {
    report(error, command?.id === undefined ? {} : { id: command.id });
  }
}

link.on(hsms ? "selected" : "connected", () => emit("selected"));
link.on("disconnected", () => emit("closed"));
link.on("error", (error) => report(error));
link.on("message", received);

if (options.active && options.transport !== "serial") {
  emit("ready");
  link.open().catch(report);
} else if (options.transport === "serial") {
  emit("ready");
  await link.open().catch(report);
} else {
  await link.open();
  emit("ready");
}
createInterface({ input: process.stdin }).on("line", perform).on("close", quit);
