"""An active HSMS-SS host that keeps requests open, one thread for each."""
import logging
import pathlib
import threading
import time

import secsgem.common
import secsgem.hsms
import secsgem.secs
import secsgem.secs.functions
from secsgem.secs.variables.dynamic import ANYVALUE



class SecsS02F101(secsgem.secs.SecsStreamFunction):
    _stream = 2
    _function = 101
    _data_format = [ANYVALUE]
    _has_reply = True
    _is_reply_required = True


class SecsS02F102(secsgem.secs.SecsStreamFunction):
    _stream = 2
    _function = 102
    _data_format = [ANYVALUE]


def functions():
    known = secsgem.secs.functions.StreamsFunctions()
    known.update(SecsS02F101)
    known.update(SecsS02F102)
    return known


def connect(port):
    logging.disable(logging.CRITICAL)
    settings = secsgem.hsms.HsmsSettings(
        address="127.0.0.1",
        port=port,
        session_id=0,
        connect_mode=secsgem.hsms.HsmsConnectMode.ACTIVE,
        device_type=secsgem.common.DeviceType.HOST,
        streams_functions=functions(),
    )
    host = secsgem.hsms.HsmsProtocol(settings)
    selected = threading.Event()
    host.events.communicating += lambda _: selected.set()
    host.enable()
    if not selected.wait(10):
        raise TimeoutError("the link was not selected")
    return host, settings


def message_named(settings, name, folder):
    """The message of a race with its items ready."""
    stream, function, file = {
        "a": (1, 1, None),
        "b": (2, 101, "w1a"),
        "w3a": (7, 3, "w3a"),
        "w3b": (7, 3, "w3b"),
    }[name]
    message = settings.streams_functions.function(stream, function)()
    if file:
        message.decode(pathlib.Path(folder, f"{file}.bin").read_bytes())
    return message


def exchange(host, settings, message):
    reply = host.send_and_waitfor_response(message)
    if reply is None:
        raise TimeoutError("no reply")
    return settings.streams_functions.decode(reply).get()


def measure_round_trips(links, depth, seconds, name, folder=""):
    begin = time.perf_counter() + max(0.3, seconds / 3)
    end = begin + seconds
    times, failures = [], []

    def one(host, settings):
        message = message_named(settings, name, folder)
        try:
            while True:
                sent = time.perf_counter()
                if sent >= end:
                    return
                exchange(host, settings, message)
                done = time.perf_counter()
                if sent >= begin and done < end:
                    times.append(1e6 * (done - sent))
        except Exception as failure:  # told by the thread that waits
            failures.append(failure)

    threads = [threading.Thread(target=one, args=link) for link in links for _ in range(depth)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    if failures:
        raise failures[0]
    if not times:
        raise ValueError("no round trip in the time")
    times.sort()

    def quantile(hundredths):
        return times[(len(times) - 1) * hundredths // 100]

    return {
        "p50_us": quantile(50),
        "p99_us": quantile(99),
        "per_s": len(times) / seconds,
        "count": len(times),
    }
