"""The race program on secsgem: ../README.md tells its interface.

    race.py version | codec FOLDER | host PORT NAME DEPTH SECONDS FOLDER | links PORT LINKS SECONDS
            | start PORT | idle PORT LINKS
"""
import json
import os
import platform
import sys
import traceback


def show(**fields):
    print(json.dumps(fields), flush=True)


def version():
    import importlib.metadata

    runtime = f"{platform.python_implementation()} {platform.python_version()}"
    show(name="secsgem", version=importlib.metadata.version("secsgem"), runtime=runtime)


def codec(folder):
    import codec as measures

    show(**measures.measure_codec(folder))


def connect_all(first, count):
    import host as hosts

    return [hosts.connect(int(first) + i) for i in range(int(count))]


def host(port, name, depth, seconds, folder):
    import host as hosts

    links = connect_all(port, 1)
    show(**hosts.measure_round_trips(links, int(depth), float(seconds), name, folder))


def links(first, count, seconds):
    import host as hosts

    show(**hosts.measure_round_trips(connect_all(first, count), 1, float(seconds), "a"))


def start(port):
    import host as hosts

    link, settings = hosts.connect(int(port))
    hosts.exchange(link, settings, settings.streams_functions.function(1, 1)())


def idle(first, count):
    kept = connect_all(first, count)
    show(event="ready")
    sys.stdin.read()
    return kept


COMMANDS = {
    command.__name__: command for command in (version, codec, host, links, start, idle)
}


def main():
    if len(sys.argv) < 2 or sys.argv[1] not in COMMANDS:
        print(__doc__, file=sys.stderr)
        return 2
    COMMANDS[sys.argv[1]](*sys.argv[2:])
    return 0


if __name__ == "__main__":
    status = 1
    try:
        status = main()
    except Exception:
        traceback.print_exc()
    sys.stdout.flush()
    os._exit(status)  # the threads of the stack would keep the process
