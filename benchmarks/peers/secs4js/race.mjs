// The race program on secs4js: ../README.md tells its interface.
const [what, ...rest] = process.argv.slice(2);

function print(object) {
  process.stdout.write(JSON.stringify(object) + "\n");
}

async function connectAll(first, links) {
  const { connect } = await import("./host.mjs");
  return Promise.all(Array.from({ length: Number(links) }, (_, i) => connect(Number(first) + i)));
}

const commands = {
  async version() {
    const { folder } = await import("../../../tests/interop/peers/secs4js/stack.mjs");
    const { readFileSync } = await import("node:fs");
    const { version } = JSON.parse(readFileSync(`${folder}/package.json`, "utf8"));
    print({ name: "secs4js", version, runtime: `Node ${process.versions.node}` });
  },
  async codec(folder) {
    const { measureCodec } = await import("./codec.mjs");
    print(measureCodec(folder));
  },
  async host(port, name, depth, seconds, folder) {
    const { bodyOf, connect, measureRoundTrips, messages } = await import("./host.mjs");
    const hosts = [await connect(Number(port))];
    const body = bodyOf(messages[name], folder);
    print(await measureRoundTrips(hosts, Number(depth), Number(seconds), messages[name], body));
  },
  async links(first, links, seconds) {
    const { measureRoundTrips, messages } = await import("./host.mjs");
    print(await measureRoundTrips(await connectAll(first, links), 1, Number(seconds), messages.a, null));
  },
  async start(port) {
    const { connect } = await import("./host.mjs");
    const reply = await (await connect(Number(port))).send(1, 1, true);
    if (reply.func !== 2) throw new Error("no S1F2");
  },
  async idle(first, links) {
    await connectAll(first, links);
    print({ event: "ready" });
    for await (const _ of process.stdin);
  },
};

if (!(what in commands)) {
  process.stderr.write("run version|codec|host|links|start|idle ...\n");
  process.exit(2);
}
await commands[what](...rest);
process.exit(0);
