#!/usr/bin/env python3
"""Runs links over a bad network, in real time: once on a cable between two network namespaces, where
those can be made, and always through a relay on the loopback address.

    tests/network/run.py PEER [WORD]    PEER is the program network_peer; WORD picks scenes
"""
import concurrent.futures
import os
import pathlib
import sys
import threading
import time

import cable
import scenes

DICTIONARY = pathlib.Path(__file__).parents[2] / "dictionaries" / "Default.xml"
LIMIT = 170  # seconds; only a run that hangs takes so long
# Those that take longest come first.
PORT_TYPES = {"tcpip": scenes.TCP, "hsms-ss": scenes.HSMS_SS, "hsms": scenes.HSMS}


AT_A_TIME = 8

_printing = threading.Lock()


def play(network, stage_type, port_type, scene, command):
    """True when the scene has passed."""
    begin = time.monotonic()
    stage = stage_type(PORT_TYPES[port_type], command)
    try:
        scene(stage)
        verdict = "ok"
    except Exception as failure:  # pylint: disable=broad-except
        verdict = f"FAILED: {failure!r}"
    stage.close()
    lines = [side.summary() for side in stage.sides_made()]
    if verdict != "ok":
        lines += [line for side in stage.sides_made() for line in side.story()]
    with _printing:
        took = time.monotonic() - begin
        print(f"network: {network}, {port_type}: {scene.__name__.replace('_', ' ')}: {verdict} ({took:.1f} s)")
        for line in lines:
            print(f"    {line}")
        sys.stdout.flush()
    return verdict == "ok"


def give_up():
    """The ends see the end of their input and leave by themselves."""
    print(f"network: not done within {LIMIT} s", flush=True)
    os._exit(1)  # pylint: disable=protected-access


def main(arguments):
    if len(arguments) not in (1, 2):
        print(__doc__, file=sys.stderr)
        return 2
    word = arguments[1] if len(arguments) == 2 else ""
    networks = [("relay", scenes.ProxyStage, scenes.THROUGH_THE_RELAY)]
    reason = cable.become_able()
    if reason:
        print(f"network: no network namespaces here ({reason}): the relay alone plays the network")
    else:
        networks.append(("cable", scenes.NamespaceStage, scenes.ON_A_CABLE))
    command = [arguments[0], str(DICTIONARY)]
    todo = [
        (network, stage_type, port_type, scene, command)
        for port_type in PORT_TYPES
        for network, stage_type, its_scenes in networks
        for scene in its_scenes
        if scene not in (scenes.OF_FRAMES if port_type == "tcpip" else scenes.OF_BLOCKS)
        if word in f"{network}, {port_type}: {scene.__name__.replace('_', ' ')}"
    ]
    watchdog = threading.Timer(LIMIT, give_up)
    watchdog.start()
    begin = time.monotonic()
    with concurrent.futures.ThreadPoolExecutor(AT_A_TIME) as pool:
        passed = sum(pool.map(lambda one: play(*one), todo))
    watchdog.cancel()
    print(f"network: {passed} of {len(todo)} scenes passed in {time.monotonic() - begin:.0f} s")
    return 0 if todo and passed == len(todo) else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
