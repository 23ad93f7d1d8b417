// The secs4js package, from where the peers are installed.
import { existsSync } from "node:fs";
import path from "node:path";
import { fileURLToPath, pathToFileURL } from "node:url";

const root = fileURLToPath(new URL("../../../../", import.meta.url));
const peers = process.env.HEXMIRE_PEERS ?? path.join(root, "build", "peers");
export const folder = path.join(peers, "secs4js", "node_modules", "secs4js");

if (!existsSync(folder)) {
  process.stderr.write(`secs4js is not installed in ${peers}\n`);
  process.exit(3);
}

export const stack = await import(pathToFileURL(path.join(folder, "lib", "index.js")).href);
