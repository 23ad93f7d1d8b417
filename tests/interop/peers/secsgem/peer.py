"""A host or an equipment on secsgem, driven by lines of JSON: ../README.md tells the interface.

    peer --role host|equipment --transport hsms|secs1tcp|serial ...
"""
import argparse
import concurrent.futures
import json
import logging
import os
import socket
import sys
import threading
import time

import secsgem.common
import secsgem.hsms
import secsgem.secs
import secsgem.secs.variables
import secsgem.secsi
import secsgem.secsitcp
from secsgem.hsms.connection_state_machine import ConnectionState

TIMES = ["t1", "t2", "t3", "t4", "t5", "t6", "t7", "t8"]
IDENTITY = {"host": "0100", "equipment": "0102" + "410450454552" + "4103312e30"}
WORKERS = 32  # requests that wait for replies at the same time

output = threading.Lock()
wanted = threading.local()  # what the request of this thread asked for


def emit(event, **fields):
    with output:
        sys.stdout.write(json.dumps({"event": event, **fields}) + "\n")
        sys.stdout.flush()


def decoded(body):
    """The stack's own items of a body; None for an empty one."""
    if not body:
        return None
    item = secsgem.secs.variables.Dynamic([])
    end = item.decode(body)
    if end != len(body):
        raise ValueError(f"{len(body) - end} bytes are left over")
    return item


def through_the_stack(body):
    """A body as the stack writes it. What it has no items for goes as it is, which is told."""
    try:
        item = decoded(body)
        return b"" if item is None else item.encode()
    except Exception as problem:  # the decoder raises whatever it stumbles over
        emit("error", text=f"no items of the stack for {body[:16].hex()}: {problem}")
        return body


class Outgoing:
    """Stands for a stream and function where the stack wants one of its own classes."""

    def __init__(self, stream, function, wait, body):
        self.stream, self.function, self.is_reply_required = stream, function, wait
        self._body = through_the_stack(body)

    def encode(self):
        return self._body


class EveryFunction(secsgem.secs.functions.StreamsFunctions):
    """The stack drops a message whose function it does not know, or whose body is of another shape."""

    def decode(self, message):
        return None


class Chosen:
    """A protocol of the stack that takes system bytes from outside and tells what was not sent."""

    def get_next_system_counter(self):
        system = getattr(wanted, "system", None)
        wanted.system = None
        return super().get_next_system_counter() if system is None else system

    def send_message(self, message):
        wanted.sent = super().send_message(message)
        return wanted.sent


class Hsms(Chosen, secsgem.hsms.HsmsProtocol):
    """A Select.req that comes before the stack has noted its connection leaves it unselected for good."""

    def _process_received_data(self):
        while self._connected and self._connection_state.current == ConnectionState.NOT_CONNECTED:
            time.sleep(0.001)
        super()._process_received_data()


class SecsI(Chosen, secsgem.secsi.SecsIProtocol):
    pass


def fields_of(message):
    header = message.header
    return {
        "stream": header.stream,
        "function": header.function,
        "w": header.require_response,
        "system": header.system,
        "device": header.session_id,
        "body": message.data.hex(),
    }


def settings_of(options):
    equipment = options.role == "equipment"
    common = {name: getattr(options, name) for name in TIMES if getattr(options, name) is not None}
    common["session_id"] = options.device
    common["streams_functions"] = EveryFunction()
    kinds = secsgem.common.DeviceType
    common["device_type"] = kinds.EQUIPMENT if equipment else kinds.HOST
    active = options.mode == "active"
    if options.transport == "serial":
        return secsgem.secsi.SecsISettings(port=options.device_file, speed=options.baud, **common)
    common.update(address=options.address, port=options.port)
    if options.transport == "secs1tcp":
        modes = secsgem.secsitcp.SecsITcpConnectMode
        return secsgem.secsitcp.SecsITcpSettings(
            connect_mode=modes.CLIENT if active else modes.SERVER, **common
        )
    modes = secsgem.hsms.HsmsConnectMode
    return secsgem.hsms.HsmsSettings(connect_mode=modes.ACTIVE if active else modes.PASSIVE, **common)


class Peer:
    def __init__(self, options):
        self.hsms = options.transport == "hsms"
        self.protocol = (Hsms if self.hsms else SecsI)(settings_of(options))
        if self.hsms and options.linktest is not None:
            self.protocol._linktest_timeout = options.linktest or threading.TIMEOUT_MAX
        self.answers = {}
        self.defaults = {
            (1, 1): IDENTITY[options.role],
            (1, 13): "0102" + "210100" + IDENTITY[options.role],
            (5, 1): "210100",
            (6, 11): "210100",
        }
        self.use_defaults = True
        self.workers = concurrent.futures.ThreadPoolExecutor(WORKERS)
        self.senders = concurrent.futures.ThreadPoolExecutor(1)
        self.protocol.events.communicating += lambda _: emit("selected")
        self.protocol.events.disconnected += lambda _: emit("closed")
        self.protocol.events.message_received += self.received

    # --- what comes in

    def received(self, data):
        message = data["message"]
        emit("received", **fields_of(message))
        if message.header.function % 2 == 1:
            self.answer_to(message)

    def answer_to(self, message):
        name = (message.header.stream, message.header.function)
        told = self.answers.get(name)
        if told is None:
            if not self.use_defaults or not message.header.require_response:
                return
            known = self.defaults.get(name)
            reply = [name[0], 0 if known is None else name[1] + 1]
            told = {"body": known or ""}
        else:
            reply = told.get("reply", [name[0], name[1] + 1])
            if "count" in told:
                told["count"] -= 1
                if told["count"] <= 0:
                    del self.answers[name]
        text = told.get("body", "")
        body = message.data if text == "echo" else bytes.fromhex(text)
        system = message.header.system

        def send():
            if not self.protocol.send_response(Outgoing(*reply, False, body), system):
                emit("error", text=f"S{reply[0]}F{reply[1]} could not be sent")

        if told.get("delay"):
            timer = threading.Timer(told["delay"], send)
            timer.daemon = True
            timer.start()
        else:
            send()

    # --- commands

    def request(self, command):
        wanted.system, wanted.sent = command.get("system"), None
        body = bytes.fromhex(command.get("body", ""))
        outgoing = Outgoing(command["stream"], command["function"], True, body)
        reply = self.protocol.send_and_waitfor_response(outgoing)
        if reply is not None:
            emit("reply", id=command["id"], **fields_of(reply))
        elif wanted.sent:
            emit("timeout", id=command["id"])
        else:
            emit("error", id=command["id"], text="the message could not be sent")

    def send(self, command):
        wanted.system = command.get("system")
        body = bytes.fromhex(command.get("body", ""))
        outgoing = Outgoing(command["stream"], command["function"], False, body)
        if not self.protocol.send_stream_function(outgoing):
            emit("error", text="the message could not be sent")

    def linktest(self):
        if self.protocol.send_linktest_req() is not None:
            emit("linktest")

    def separate(self):
        self.protocol._connection.disconnect()  # which sends Separate.req first

    def disconnect(self):
        self.protocol._connection._sock.shutdown(socket.SHUT_RDWR)

    def perform(self, command):
        """False: it was the last one."""
        do = command["do"]
        if do == "request":
            self.run(self.workers, self.request, command)
        elif do == "send":
            self.run(self.senders, self.send, command)
        elif do == "answer":
            self.answers[command["stream"], command["function"]] = command
        elif do == "answer_default":
            self.use_defaults = command["on"]
        elif do in ("linktest", "separate") and self.hsms:
            self.run(self.workers, getattr(self, do))
        elif do == "disconnect" and hasattr(self.protocol._connection, "_sock"):
            self.run(self.workers, self.disconnect)
        elif do == "quit":
            return False
        else:
            emit("unsupported", do=do)
        return True

    def run(self, pool, action, *arguments):
        def guarded():
            try:
                action(*arguments)
            except Exception as problem:  # whatever the stack raises is told
                fields = {"id": arguments[0]["id"]} if arguments and "id" in arguments[0] else {}
                emit("error", text=repr(problem), **fields)

        pool.submit(guarded)


def read_options():
    parser = argparse.ArgumentParser()
    parser.add_argument("--role", choices=["host", "equipment"], required=True)
    parser.add_argument("--transport", choices=["hsms", "secs1tcp", "serial"], required=True)
    parser.add_argument("--mode", choices=["active", "passive"], default="active")
    parser.add_argument("--address", default="127.0.0.1")
    parser.add_argument("--port", type=int, default=0)
    parser.add_argument("--device-file")
    parser.add_argument("--baud", type=int, default=9600)
    parser.add_argument("--device", type=int, default=0)
    parser.add_argument("--r-bit", action="store_true", help="set anyhow by this stack")
    for name in [*TIMES, "linktest"]:
        parser.add_argument(f"--{name}", type=float)
    return parser.parse_args()


def main():
    logging.basicConfig(stream=sys.stderr, level=logging.WARNING)
    peer = Peer(read_options())
    emit("ready")
    peer.protocol.enable()
    for line in sys.stdin:
        try:
            if not peer.perform(json.loads(line)):
                break
        except Exception as problem:
            emit("error", text=repr(problem))
    ending = threading.Thread(target=peer.protocol.disable, daemon=True)
    ending.start()
    ending.join(2)
    os._exit(0)  # threads of the stack may still wait for bytes


if __name__ == "__main__":
    main()
