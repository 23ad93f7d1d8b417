#!/usr/bin/env python3
"""Has tshark, Wireshark's reader without a window, read the captures that the program writes.

    tests/interop/capture.py PROGRAM
"""
import pathlib
import subprocess
import sys
import tempfile

import hsms
import run
from hsms import ascii_item, control, data, item

# What a sound capture has none of: dissectors that stumble, wrong checksums, holes in a stream.
TROUBLE = "_ws.malformed or _ws.expert.severity >= warning or tcp.checksum.status == 0 or ip.checksum.status == 0"


def tshark(capture, port, protocol, wanted="", fields=()):
    """One list of fields for each packet that a filter lets through."""
    command = ["tshark", "-n", "-r", str(capture), "-d", f"tcp.port=={port},{protocol}", "-T", "fields"]
    command += ["-o", "tcp.check_checksum:TRUE", "-o", "ip.check_checksum:TRUE"]
    command += [word for field in fields for word in ("-e", field)]
    if wanted:
        command += ["-Y", wanted]
    done = subprocess.run(command, capture_output=True, text=True, timeout=6 * hsms.PATIENCE)
    assert done.returncode == 0, done.stderr
    return [line.split("\t") for line in done.stdout.splitlines()]


def assert_sound(capture, port, protocol):
    trouble = tshark(capture, port, protocol, TROUBLE, ("frame.number", "_ws.col.Info"))
    assert not trouble, f"{capture.name}: {trouble}"


def only_file(folder):
    files = list(pathlib.Path(folder).iterdir())
    assert len(files) == 1, files
    assert files[0].suffix == ".pcapng", files
    return files[0]


def hsms_messages_have_their_names(folder):
    port = run.free_port()
    with run.program("equipment", "--local", f"127.0.0.1:{port}", "--pcap", folder):
        peer = run.call(port)
        peer.send(control(hsms.SELECT_REQ, 1))
        peer.expect("SType 2")
        peer.send(data(1, 1, 100, wait=True))
        peer.expect("S1F2")
        peer.send_in_pieces(data(1, 13, 101, item(0, []), wait=True))
        peer.expect("S1F14")
        recipe = item(0, [ascii_item("RECIPE-7"), item(0o10, bytes(range(200)))])
        peer.send(control(hsms.LINKTEST_REQ, 2))
        peer.expect("SType 6")
        peer.send(data(7, 3, 102, recipe, wait=True))
        peer.expect("S7F4")
        peer.send(control(hsms.SEPARATE_REQ, 3))
        peer.expect_closed()
        peer.close()
    capture = only_file(folder)
    assert_sound(capture, port, "hsms")
    rows = tshark(capture, port, "hsms", "hsms", ("_ws.col.Protocol", "_ws.col.Info"))
    print(*(f"  {protocol} {info}" for protocol, info in rows), sep="\n")
    text = " ".join(info for _, info in rows)
    names = ["Select.req", "Select.rsp", "Linktest.req", "Linktest.rsp", "Separate.req"]
    for name in [*names, "S01F01", "S01F02", "S01F13", "S01F14", "S07F03", "S07F04"]:
        assert name in text, f"{name} is not in {text}"
    strings = tshark(capture, port, "hsms", "hsms.header.function == 3", ("hsms.data.item.value.string",))
    assert strings == [["RECIPE-7"]], strings
    comments = tshark(capture, port, "hsms", "frame.comment", ("tcp.flags.str", "frame.comment"))
    assert [comment.split(":")[0] for _, comment in comments] == ["connected", "disconnected"], comments
    interfaces = tshark(capture, port, "hsms", "", ("frame.interface_name",))
    assert {name for (name,) in interfaces} == {f"at-127.0.0.1-{port}-device-0"}, interfaces


def blocks_of_secs_i_are_sound_tcp(folder):
    port = run.free_port()
    kind = ("--port-type", "tcpip")
    script = "connect 10\nsend S1F1\nexpect S1F2 10\n"
    with run.program("equipment", *kind, "--local", f"127.0.0.1:{port}", "--t5", "1") as equipment:
        host = ("host", *kind, "--remote", f"127.0.0.1:{port}", "--t5", "1", "--pcap", folder)
        with run.program(*host, "--script", "-", script=script) as child:
            _, errors = child.communicate(timeout=2 * hsms.PATIENCE)
            assert child.returncode == 0, errors
        equipment.terminate()
    capture = only_file(folder)
    assert_sound(capture, port, "data")
    sent = "".join(row[0] for row in tshark(capture, port, "data", f"tcp.dstport == {port}", ("data",)))
    received = "".join(row[0] for row in tshark(capture, port, "data", f"tcp.srcport == {port}", ("data",)))
    # ENQ, the block of S1F1 W, and what answers the equipment's EOT, ACK and block.
    assert sent.startswith("05" + "0a" + "00008101" + "8001"), sent
    assert received.startswith("04" + "06" + "05"), received


SCENARIOS = [hsms_messages_have_their_names, blocks_of_secs_i_are_sound_tcp]


def main():
    if len(sys.argv) != 2:
        print(__doc__, file=sys.stderr)
        return 2
    run.PROGRAM = sys.argv[1]
    for scenario in SCENARIOS:
        with tempfile.TemporaryDirectory() as folder:
            scenario(folder)
        print(f"capture: {scenario.__name__.replace('_', ' ')}: ok")
    return 0


if __name__ == "__main__":
    sys.exit(main())
