"""What happens to a link on a bad network, and what must come of it.

Each scene gets a stage with a host and an equipment that talk in both directions; it spoils the
network for a while. Then the link must be back by itself, every message answered or reported, none
delivered twice or out of order, and the next exchange must pass.
"""
import pathlib
import socket
import time

from cable import Cable, Conditions
from peers import PATIENCE, Side
from proxy import ADDRESS, Proxy, Treatment

HSMS, TCP, HSMS_SS = 2, 3, 4
ACTIVE, PASSIVE, ALTERNATING = 1, 2, 3
PORT = 5000

# Short ones, so that a fault is found soon. T3 leaves room for what comes late after all.
TIMERS = {"t1": 1, "t2": 1, "t3": 3, "t4": 2, "t5": 1, "t6": 1, "t7": 2, "t8": 1, "linktest_ms": 1000}
# For networks that are slow but work: nothing may be lost there.
PATIENT_TIMERS = TIMERS | {"t2": 5, "t3": 20, "t4": 20, "t6": 10, "t7": 10, "t8": 10}


class Stage:
    """Host and equipment on one network. The host connects."""

    def __init__(self, port_type, command):
        self.port_type = port_type
        self._command = command
        self.host = self.equipment = None

    def start(self, timers, alternating=False):
        common = timers | {"type": self.port_type}
        self.equipment_settings = common | {
            "role": "equipment",
            "mode": ALTERNATING if alternating else PASSIVE,
            "local_address": self.equipment_address,
            "local_port": self.equipment_port,
            "remote_address": self.host_address,
            "remote_port": PORT,
        }
        self.host_settings = common | {
            "role": "host",
            "mode": ALTERNATING if alternating else ACTIVE,
            "local_address": self.host_address,
            "local_port": PORT,
            "remote_address": self.remote_address,
            "remote_port": self.remote_port,
        }
        self.host = Side("host", self._command, self.start_in_host)
        self.equipment = Side("equipment", self._command, self.start_in_equipment)
        self.equipment.start(**self.equipment_settings)
        self.wait_for_listener()
        self.host.start(**self.host_settings)
        self.wait_connected()

    def wait_for_listener(self):
        """A relay would take the host's call before there is anybody to pass it on to."""

    @property
    def sides(self):
        return (self.host, self.equipment)

    def sides_made(self):
        return [side for side in self.sides if side and side.runs]

    def wait_connected(self):
        for side in self.sides:
            side.now.wait(lambda run=side.now: run.connected, f"the {side.name}'s connection")

    def talk(self, every=0.1, size=30, answered=3):
        """Lets both sides send, until a few messages have been answered."""
        for side in self.sides:
            self.talk_from(side, every, size, answered)

    def talk_from(self, side, every=0.1, size=30, answered=3):
        run = side.now
        wanted = len(run.answered) + answered
        run.tell(f"send {int(every * 1000)} {size}")
        run.wait(lambda: len(run.answered) >= wanted, f"answers to the {side.name}")

    def wait_ended(self):
        """HSMS finds out that nobody is there; blocks over TCP have nothing to find it with."""
        for side in self.sides:
            run = side.now
            run.wait(lambda run=run: not run.connected, f"the end of the {side.name}'s link")

    def finish(self):
        """Waits for the link, settles the account and tries one more exchange in each direction."""
        self.wait_connected()
        for side in self.sides:
            side.now.stop()
        for side in self.sides:
            run = side.now
            run.wait(lambda run=run: not run.unaccounted(), f"an answer or error for each message of the {side.name}")
        for side in self.sides:
            run = side.now
            before = len(run.answered)
            run.tell("once 30")
            run.wait(lambda run=run, before=before: len(run.answered) > before, f"the {side.name}'s next exchange")
        for side in self.sides:
            status = side.now.quit()
            assert status == 0 and not side.now.errors, f"{side.name} ended with {status}"
        self.host.check(self.equipment)
        self.equipment.check(self.host)

    def check_nothing_lost(self):
        for side in self.sides:
            assert not side.now.reported, f"{side.name} lost messages: {dict(side.now.reported)}"
            assert not side.now.disconnects[:-1], f"{side.name} lost its link: {side.now.disconnects}"

    def close(self):
        for side in self.sides_made():
            for run in side.runs:
                if run.alive():
                    run.kill()
        self.close_network()


class NamespaceStage(Stage):
    """Each side in a network namespace of its own."""

    def __init__(self, port_type, command):
        super().__init__(port_type, command)
        self.host_address = "10.99.0.1"
        self.remote_address = self.equipment_address = "10.99.0.2"
        self.remote_port = self.equipment_port = PORT
        self.cable = Cable([self.host_address, self.equipment_address])

    def start_in_host(self, start):
        return self.cable.ends[0].do(start)

    def start_in_equipment(self, start):
        return self.cable.ends[1].do(start)

    def close_network(self):
        self.cable.close()


class ProxyStage(Stage):
    """Both sides on the loopback address, with a relay between them."""

    def __init__(self, port_type, command):
        super().__init__(port_type, command)
        with socket.socket() as probe:
            probe.bind((ADDRESS, 0))
            self.equipment_port = probe.getsockname()[1]
        self.proxy = Proxy(self.equipment_port)
        self.host_address = self.equipment_address = self.remote_address = ADDRESS
        self.remote_port = self.proxy.port

    @staticmethod
    def start_in_host(start):
        return start()

    start_in_equipment = start_in_host

    def wait_for_listener(self):
        wanted = f":{self.equipment_port:04X} 00000000:0000 0A"
        deadline = time.monotonic() + PATIENCE
        while wanted not in pathlib.Path("/proc/net/tcp").read_text(encoding="ascii"):
            assert time.monotonic() < deadline, "the equipment does not listen"
            time.sleep(0.01)

    def close_network(self):
        self.proxy.close()


# --- on a cable -------------------------------------------------------------------------------------


def the_cable_is_pulled_at_one_end(stage):
    stage.start(TIMERS)
    stage.talk()
    stage.cable.ends[0].set_up(False)
    outage(stage)
    stage.cable.ends[0].set_up(True)
    stage.finish()


def packets_vanish_both_ways(stage):
    stage.start(TIMERS)
    stage.talk()
    stage.cable.conditions = Conditions(drop_all=True)
    outage(stage)
    stage.cable.conditions = Conditions()
    stage.finish()


def large_messages_pile_up(stage):
    """More than the system takes waits in the driver, a Linktest among it, and nothing moves."""
    stage.start(TIMERS | {"stall_ms": 2000})
    stage.talk()
    stage.cable.conditions = Conditions(drop_all=True)
    for side in stage.sides:
        side.now.tell("send 50 300000")
    stage.wait_ended()
    for side in stage.sides:
        side.now.stop()
        assert side.now.disconnects == [3009], f"{side.name}: {side.now.disconnects}"
        assert side.now.codes[3073], f"no message of the {side.name} was waiting in the driver"
    stage.cable.conditions = Conditions()
    stage.finish()


def outage(stage):
    """Lasts until HSMS has noticed, and for blocks over TCP until messages have been given up."""
    if stage.port_type == TCP:
        for side in stage.sides:
            run = side.now
            run.wait(lambda run=run: run.codes[3010] > 0, f"a message that the {side.name} gave up")
        return
    stage.wait_ended()
    for side in stage.sides:
        assert side.now.disconnects == [3006], f"{side.name}: {side.now.disconnects}, not T6"
        run = side.now
        run.wait(lambda run=run: run.codes[3040] > 0, f"a message that the {side.name} could not send")


def the_equipment_is_killed_and_started_again(stage):
    stage.start(TIMERS)
    stage.talk()
    stage.equipment.now.kill()
    run = stage.host.now
    run.wait(lambda: run.disconnects, "the end of the host's link")
    # The relay takes the call and ends it: over TCP that is a link, if a short one.
    run.wait(lambda: run.codes[3050] + run.codes[3055] + len(run.disconnects) > 1, "a call in vain")
    stage.equipment.start(**stage.equipment_settings)
    stage.wait_connected()
    stage.talk_from(stage.equipment)
    stage.finish()


def the_host_is_killed_and_started_again(stage):
    stage.start(TIMERS)
    stage.talk()
    stage.host.now.kill()
    stage.equipment.now.wait(lambda: not stage.equipment.now.connected, "the end of the equipment's link")
    stage.host.start(**stage.host_settings)
    stage.wait_connected()
    stage.talk_from(stage.host)
    stage.finish()


def the_host_loses_its_power(stage):
    """Its machine comes back without a memory of the connection, which the equipment still has."""
    stage.start(TIMERS | {"linktest_ms": 0})
    stage.talk_from(stage.host)
    stage.host.now.stop()
    host = stage.host.now
    host.wait(lambda: not host.unaccounted(), "the host's answers")
    time.sleep(0.3)  # TCP puts its own acknowledgements off; nothing may be on its way any more.
    stage.cable.conditions = Conditions(drop_all=True)
    stage.host.now.kill()
    stage.cable.replace_end(0)
    stage.cable.conditions = Conditions()
    assert stage.equipment.now.connected
    stage.host.start(**stage.host_settings)
    equipment = stage.equipment.now
    equipment.wait(lambda: equipment.codes[3041], "a call while the equipment holds a dead link")
    if stage.port_type == TCP:
        equipment.tell("once 30")  # HSMS sends a Linktest; blocks over TCP need something to send.
    # Sooner than TCP's keep-alive, which would find out after 30 s.
    equipment.wait(lambda: equipment.disconnects, "the end of the dead link", 10)
    stage.wait_connected()
    stage.talk()
    stage.finish()


def both_ends_call_each_other(stage):
    """Alternating: whoever calls first, there is one link in the end."""
    stage.start(TIMERS, alternating=True)
    stage.talk()
    stage.cable.conditions = Conditions(drop_all=True)
    outage(stage)
    stage.cable.conditions = Conditions()
    stage.wait_connected()
    stage.equipment.now.kill()
    stage.host.now.wait(lambda: not stage.host.now.connected, "the end of the host's link")
    stage.equipment.start(**stage.equipment_settings)
    stage.wait_connected()
    stage.talk_from(stage.equipment)
    stage.finish()


def packets_take_200_ms(stage):
    stage.start(PATIENT_TIMERS)
    stage.cable.conditions = Conditions(delay=0.2)
    stage.talk(every=pace(stage, 2.5), answered=2)
    stage.finish()
    stage.check_nothing_lost()


def five_percent_of_the_packets_are_lost(stage):
    stage.start(PATIENT_TIMERS)
    stage.cable.conditions = Conditions(loss=0.05, delay=0.002)
    stage.talk(every=pace(stage, 0.5, 0.03), size=pace(stage, 300, 600), answered=pace(stage, 8, 60))
    stage.finish()
    stage.check_nothing_lost()
    assert stage.cable.lost, "no packet was lost"


def packets_overtake_each_other(stage):
    stage.start(PATIENT_TIMERS)
    stage.cable.conditions = Conditions(overtaken=0.3, delay=0.002)
    stage.talk(every=pace(stage, 0.3, 0.01), size=pace(stage, 300, 600), answered=pace(stage, 8, 100))
    stage.finish()
    stage.check_nothing_lost()
    assert stage.cable.overtaken, "no packet was overtaken"


def everything_at_once(stage):
    bad = Conditions(loss=0.03, delay=0.01, jitter=0.02, overtaken=0.2)
    # A block line has much to catch up with: the control clears what has waited for four T3.
    stage.start(TIMERS | {"t3": pace(stage, 8, 3)})
    stage.cable.conditions = bad
    stage.talk(every=pace(stage, 1.5, 0.05), size=pace(stage, 30, 600))
    stage.cable.conditions = Conditions(drop_all=True)
    outage(stage)
    stage.cable.conditions = bad
    stage.wait_connected()
    stage.talk(every=pace(stage, 1.5, 0.05), size=pace(stage, 30, 600))
    stage.finish()


def pace(stage, of_blocks, of_messages=0.1):
    """SECS-I sends one block at a time, and each takes two trips: such a line is slower."""
    return of_blocks if stage.port_type == TCP else of_messages


# --- through the relay ------------------------------------------------------------------------------


def connections_are_closed_and_refused(stage):
    stage.start(TIMERS)
    stage.talk()
    stage.proxy.refuse()
    stage.wait_ended()
    run = stage.host.now
    run.wait(lambda: run.codes[3050] > 0, "a refused attempt of the host")
    stage.proxy.accept_again()
    stage.finish()


def connections_are_reset_again_and_again(stage, timers=None):
    stage.start(timers or TIMERS)
    for _ in range(3):
        stage.talk()
        stage.proxy.end_connections(reset=True)
        stage.wait_ended()
        stage.wait_connected()
    stage.finish()
    for side in stage.sides:
        assert side.now.disconnects[:3] == [3055] * 3, f"{side.name}: {side.now.disconnects}"


def the_programs_open_their_ports_again(stage):
    """Without AutoReconnect: each Disconnect handler calls OpenPort."""
    connections_are_reset_again_and_again(stage, TIMERS | {"reopens": 1})


def bytes_are_held_up_and_come_late(stage):
    """What the ends have given up long ago reaches them when the relay goes on."""
    stage.start(TIMERS)
    stage.talk()
    stage.proxy.treatment = Treatment(hold=True)
    outage(stage)
    stage.proxy.treatment = Treatment()
    stage.finish()


def the_relay_forgets_what_it_held(stage):
    stage.start(TIMERS)
    stage.talk()
    stage.proxy.treatment = Treatment(hold=True)
    outage(stage)
    stage.proxy.end_connections()
    for side in stage.sides:
        run = side.now
        run.wait(lambda run=run: run.disconnects, f"the end of the {side.name}'s link")
    stage.proxy.treatment = Treatment()
    stage.finish()
    if stage.port_type == TCP:
        for side in stage.sides:
            assert side.now.codes[3073], f"the {side.name}'s queue outlived its connection"


def bytes_take_200_ms(stage):
    stage.start(PATIENT_TIMERS)
    stage.proxy.treatment = Treatment(delay=0.2)
    stage.talk(every=pace(stage, 2.5), answered=2)
    stage.finish()
    stage.check_nothing_lost()


def bytes_come_in_small_pieces(stage):
    stage.start(PATIENT_TIMERS)
    stage.proxy.treatment = Treatment(chop=True)
    stage.talk(every=pace(stage, 2, 0.5), size=300, answered=2)
    stage.finish()
    stage.check_nothing_lost()
    assert stage.proxy.pieces > 400, f"{stage.proxy.pieces} pieces only"


def acknowledges_come_too_late(stage):
    """What had arrived is sent again. One exchange at a time: such a line carries little."""
    stage.start(TIMERS | {"t3": 10})
    stage.proxy.treatment = Treatment(late_acks=1.5)
    for count in (1, 2):
        for side in stage.sides:
            run = side.now
            run.tell("once 30")
            settled = lambda run=run, count=count: len(run.sent) == count and not run.unaccounted()
            run.wait(settled, f"an answer or error for message {count} of the {side.name}")
    stage.proxy.treatment = Treatment()
    stage.finish()
    for side in stage.sides:
        assert side.now.codes[3022], f"no block came twice to the {side.name}"


ON_A_CABLE = [
    the_cable_is_pulled_at_one_end,
    packets_vanish_both_ways,
    large_messages_pile_up,
    the_equipment_is_killed_and_started_again,
    the_host_is_killed_and_started_again,
    the_host_loses_its_power,
    both_ends_call_each_other,
    packets_take_200_ms,
    five_percent_of_the_packets_are_lost,
    packets_overtake_each_other,
    everything_at_once,
]
THROUGH_THE_RELAY = [
    connections_are_closed_and_refused,
    connections_are_reset_again_and_again,
    the_programs_open_their_ports_again,
    bytes_are_held_up_and_come_late,
    the_relay_forgets_what_it_held,
    the_equipment_is_killed_and_started_again,
    the_host_is_killed_and_started_again,
    bytes_take_200_ms,
    bytes_come_in_small_pieces,
    acknowledges_come_too_late,
]
# Those that make no sense for the other way to carry messages.
OF_BLOCKS = {acknowledges_come_too_late}
OF_FRAMES = {large_messages_pile_up}
