"""What is tried with every peer. A scene gets a link whose two ends are up and raises AssertionError when
something else happens than it says. `link.note(text)` tells what a peer does otherwise than the standards
say, after the scene has seen it do so and Hexmire stand it; `NotPossible` that a peer has no means."""
import socket
import struct
import time

import sides

EVENTS, QUERIES, WINDOW = 1000, 100, 16
MEGABYTE = 1_000_000
SELECT_REQ, LINKTEST_REQ, LINKTEST_RSP = 1, 5, 6
ANY, HSMS, SECS_I = ("hsms", "secs1tcp", "serial"), ("hsms",), ("secs1tcp", "serial")


class NotPossible(Exception):
    """The peer has no means for this."""


def item(code, payload=b""):
    """A SECS-II item with as few length bytes as hold its length; a list of items makes a list."""
    count = len(payload)
    data = b"".join(payload) if isinstance(payload, list) else payload
    size = 1 if count < 0x100 else 2 if count < 0x10000 else 3
    return bytes([code << 2 | size]) + count.to_bytes(size, "big") + data


def text(characters):
    return item(0o20, characters.encode("latin-1"))


def numbers(name, code, letter, values):
    packed = struct.pack(f">{len(values)}{letter}", *values)
    return name, f"<{name} {' '.join(map(str, values))}>", item(code, packed)


def number_items():
    """Name, SML and bytes of numbers at the ends of their ranges: none, one and several in an item."""
    for name, code, letter in (("I1", 0o31, "b"), ("I2", 0o32, "h"), ("I4", 0o34, "i"), ("I8", 0o30, "q"),
                               ("U1", 0o51, "B"), ("U2", 0o52, "H"), ("U4", 0o54, "I"), ("U8", 0o50, "Q")):
        bits = 8 * struct.calcsize(">" + letter)
        ends = [-(1 << bits - 1), (1 << bits - 1) - 1] if name[0] == "I" else [0, (1 << bits) - 1]
        for values in ([], ends[1:], [*ends, 1]):
            yield numbers(name, code, letter, values)
    for name, code, letter in (("F4", 0o44, "f"), ("F8", 0o40, "d")):
        for values in ([], [0.15625], [-1.5, 0.0, 1024.25]):
            yield numbers(name, code, letter, values)


def items():
    """One of every format: name, SML, bytes."""
    yield "L", "<L>", item(0, [])
    yield "L", "<L <A 'x'>>", item(0, [text("x")])
    for values in (b"", b"\x07", bytes(range(0, 256, 5)), bytes(300)):
        yield "B", f"<B {' '.join(map(str, values))}>", item(0o10, values)
    for values in (b"", b"\xff", b"\xff\x00\xff"):
        yield "BOOLEAN", f"<BOOLEAN {' '.join('FT'[v > 0] for v in values)}>", item(0o11, values)
    for characters in ("", "Lot 7", "q" * 255, "q" * 256, "q" * 70_000):
        yield "A", f'<A "{characters}">', text(characters)
    yield from number_items()


# --- conversations --------------------------------------------------------------------------------------


def plain(body_hex):
    return body_hex.replace(" ", "").lower()


def ask(link, sml, stream, function, body=None):
    """Hexmire sends a primary and gets its reply; the body of the reply."""
    sent = link.hexmire.send(sml)
    reply = link.hexmire.secondary(stream, function + 1, system_bytes=sent["system_bytes"])
    if body is not None:
        assert plain(reply["body_hex"]) == body, (reply["body_hex"][:200], body[:200])
    return plain(reply["body_hex"])


def be_asked(link, stream, function, body, answer, **fields):
    """The peer sends a primary, a script answers it; the reply as the peer has it."""
    number = link.peer.request(stream, function, body, **fields)
    primary = link.hexmire.take_any([{"event": "received-primary", "stream": stream, "function": function}])
    assert primary is not None, f"no S{stream}F{function}: {link.peer.story()}; {link.hexmire.story()}"
    assert plain(primary["body_hex"]) == body, (primary["body_hex"][:200], body[:200])
    if answer is not None:
        link.hexmire.say(f"reply {answer}")
    reply = link.peer.reply(number)
    assert (reply["stream"], reply["function"]) == (stream, function + 1), reply
    return reply


def still_talks(link):
    link.peer.answer(1, 1, "0100")
    ask(link, "S1F1", 1, 1, "0100")
    be_asked(link, 1, 1, "", None if link.hexmire.role == "equipment" else "S1F2 <L>.")


def select(link):
    """Both ends say that they may send."""
    assert link.is_up  # opening it waited for both


def establish(link):
    """S1F13 in both directions."""
    accepted = item(0, [item(0o10, b"\0"), item(0, [])]).hex()
    link.peer.answer(1, 13, accepted)
    sent = link.hexmire.send("S1F13")
    link.hexmire.secondary(1, 14)
    heard = link.peer.take(event="received", stream=1, function=13)
    assert heard["body"] == plain(sent["body_hex"]) and heard["w"], heard
    if link.hexmire.role == "equipment":
        reply = be_asked(link, 1, 13, "0100", None)
        identity = item(0, [text("HXM-200"), text("1.0")])
        assert reply["body"] == item(0, [item(0o10, b"\0"), identity]).hex(), reply
    else:
        identity = item(0, [text("PEER"), text("1.0")]).hex()
        reply = be_asked(link, 1, 13, identity, "S1F14 <L <B 0> <L>>.")
        assert reply["body"] == accepted, reply


def are_you_there(link):
    """S1F1 in both directions."""
    identity = item(0, [text("PEER"), text("1.0")]).hex()
    link.peer.answer(1, 1, identity)
    ask(link, "S1F1", 1, 1, identity)
    if link.hexmire.role == "equipment":
        reply = be_asked(link, 1, 1, "", None)
        assert reply["body"] == item(0, [text("HXM-200"), text("1.0")]).hex(), reply
    else:
        assert be_asked(link, 1, 1, "", "S1F2 <L>.")["body"] == "0100"


def echo(link, sml, body):
    """To the peer, through its decoder and encoder, and back."""
    return ask(link, f"S64F1 W {sml}.", 64, 1, body.hex())


def there_and_back(link, body):
    """From the peer through Hexmire's decoder, its text and its encoder, and back."""
    number = link.peer.request(64, 1, body.hex())
    primary = link.hexmire.primary(64, 1)
    assert plain(primary["body_hex"]) == body.hex(), (primary["body_hex"][:200], body.hex()[:200])
    link.hexmire.say("reply\n" + primary["sml"].replace("S64F1 W", "S64F2", 1))
    reply = link.peer.reply(number)
    assert reply["body"] == body.hex(), (reply["body"][:200], body.hex()[:200])


def every_format(link):
    """Every item format with no, one and several values, at the ends of their ranges."""
    link.peer.answer(64, 1, "echo")
    changed = {}
    for name, sml, body in link.fitting(items()):
        sent = link.hexmire.send(f"S64F1 W {sml}.")
        assert plain(sent["body_hex"]) == body.hex(), (sml, sent)
        reply = link.hexmire.secondary(64, 2)
        if plain(reply["body_hex"]) != body.hex():
            changed.setdefault(name, []).append((body.hex(), plain(reply["body_hex"])))
    link.check_changed(changed)
    same = [body for name, _, body in items() if name not in changed]
    there_and_back(link, item(0, [body for body in same if link.many_blocks or len(body) < 6]))


def lists(link):
    """Empty lists, lists in lists, 20 levels, 300 items."""
    link.peer.answer(64, 1, "echo")
    deep_sml, deep = "<U1 1>", item(0o51, b"\1")
    for _ in range(20):
        deep_sml, deep = f"<L {deep_sml} <L>>", item(0, [deep, item(0, [])])
    cases = [
        ("<L <L> <L <L>> <L>>", item(0, [item(0, []), item(0, [item(0, [])]), item(0, [])])),
        (deep_sml, deep),
        ("<L " + "<U1 5>" * 300 + ">", item(0, [item(0o51, b"\5")] * 300)),
    ]
    for sml, body in cases:
        if link.many_blocks or len(body) <= 244:
            echo(link, sml, body)
            there_and_back(link, body)


def long_recipe(link):
    """One megabyte there and back, then from the peer."""
    if not link.many_blocks:
        one_block_only(link)
    size = link.recipe_size
    body = item(0, [text("RECIPE"), text("0123456789" * (size // 10))])
    link.peer.answer(7, 3, "echo")
    sent = link.hexmire.send(f"S7F3 W <L <A 'RECIPE'> <A '{'0123456789' * (size // 10)}'>>.")
    assert plain(sent["body_hex"]) == body.hex()
    reply = link.hexmire.take(seconds=2 * sides.PATIENCE, event="received-secondary", stream=7, function=4)
    assert plain(reply["body_hex"]) == body.hex(), "the recipe came back changed"
    assert link.peer.take(event="received", stream=7, function=3)["body"] == body.hex(), "the recipe came changed"
    number = link.peer.request(7, 3, body.hex())
    primary = link.hexmire.take(seconds=2 * sides.PATIENCE, event="received-primary", stream=7, function=3)
    assert plain(primary["body_hex"]) == body.hex(), "the recipe came changed"
    link.hexmire.say("reply S7F4 <B 0>.")
    assert link.peer.reply(number)["body"] == "210100"


def events(link):
    """A thousand events while the host queries, each of them answered."""
    report = hexmire_reports_events if link.hexmire.role == "equipment" else peer_reports_events
    if link.cannot_contend:
        report(link, window=1, queries=0)
        link.cannot_contend(link)
        still_talks(link)
    else:
        report(link, WINDOW, QUERIES)


def event_body(number):
    return item(0o54, struct.pack(">I", number)).hex()


def peer_reports_events(link, window, queries):
    link.peer.answer(1, 1, "0100")
    waiting, heard = [], []

    def end_of_one():
        reply = link.peer.reply(waiting.pop(0))
        assert (reply["stream"], reply["function"]) == (6, 12), reply

    for number in range(link.events):
        # Far from those of Hexmire: what becomes of equal ones is a scene of its own.
        waiting.append(link.peer.request(6, 11, event_body(number), system=0x10000 + number))
        if queries and number % (link.events // queries) == 0:
            link.hexmire.say("send S1F1")
        heard.append(plain(link.hexmire.primary(6, 11)["body_hex"]))
        link.hexmire.say("reply S6F12 <B 0>.")
        while len(waiting) >= window:
            end_of_one()
    while waiting:
        end_of_one()
    for _ in range(-(-link.events // (link.events // queries)) if queries else 0):
        link.hexmire.secondary(1, 2)
    assert sorted(heard) == [event_body(number) for number in range(link.events)], f"{len(heard)} events"


def hexmire_reports_events(link, window, queries):
    link.peer.answer(6, 11, "210100")
    asked, waiting = [], 0
    for number in range(link.events):
        link.hexmire.say("event 3011")
        waiting += 1
        if queries and number % (link.events // queries) == 0:
            variable = item(0, [item(0o54, struct.pack(">I", 1010))]).hex()
            asked.append(link.peer.request(1, 3, variable, system=0x10000 + number))
        while waiting >= window:
            link.hexmire.secondary(6, 12)
            waiting -= 1
    for _ in range(waiting):
        link.hexmire.secondary(6, 12)
    for number in asked:
        assert link.peer.reply(number)["body"] == item(0, [item(0o44, struct.pack(">f", 20.5))]).hex()
    reported = link.peer.drain(event="received", stream=6, function=11)
    assert len(reported) == link.events, f"{len(reported)} events"


def peer_takes_an_enq_for_an_eot(link):
    """The peer is of no use once both sides wanted the line: Hexmire says so, and goes on with the next."""
    for number in range(link.events):
        link.peer.request(6, 11, event_body(number))
        link.hexmire.say("send S1F1")
        end = link.hexmire.take_any([{"event": "received-secondary"}, {"event": "error", "code": 3002}])
        if end is None or end["event"] == "error":
            break
    link.hexmire.take(event="error", code=3010)
    link.note("as equipment takes whatever answers its ENQ for an EOT. When both sides want the line at the same "
              "time it hears nothing any more: Hexmire reports 3002 and 3010. The events were therefore sent one "
              "at a time, without queries; with another process at the other end the line goes on")
    link.restart_peer()
    link.hexmire.unexpected_errors()


def peer_forgets_what_it_postponed(link):
    """A message that the peer held back because we wanted the line too is never sent."""
    link.hexmire.say("set T3Timeout 1")
    for _ in range(link.events):
        link.hexmire.say("event 3011")
        asked = link.peer.request(1, 1)
        end = link.hexmire.take_any([{"event": "received-secondary"}, {"event": "error", "code": 2012}])
        if end is None or end["event"] == "error" or link.peer.take_any([{"event": "reply", "id": asked}], 2) is None:
            break
    else:
        raise AssertionError("nothing was lost")
    link.note("as host never sends what it had to postpone because the equipment wanted the line too. The events "
              "were therefore sent one at a time, without queries; the line goes on")
    link.hexmire.say("set T3Timeout 30")
    time.sleep(1.2)  # the T3 that may still run
    link.hexmire.unexpected_errors()


def same_system_bytes(link):
    """Each side has a primary under way with the same system bytes as the other one's."""
    link.peer.answer(1, 1, "0100")
    common = link.hexmire.send("S1F1")["system_bytes"] + 1
    link.hexmire.secondary(1, 2)
    number = link.peer.request(64, 1, system=common)
    link.hexmire.primary(64, 1)
    assert link.hexmire.send("S1F1")["system_bytes"] == common
    end = link.hexmire.take_any([{"event": "received-secondary"}, {"event": "error", "code": 2012}])
    assert end is not None, link.hexmire.story()
    if end["event"] == "error":
        taken = link.peer.outcome(number)
        assert (taken["stream"], taken["function"]) == (1, 1), taken
        link.note("takes a primary for the reply to its own one when the system bytes are the same, and answers "
                  "nothing: error 2012. System bytes of events were therefore kept apart")
        link.hexmire.say("reply S64F2 .")
    else:
        link.hexmire.say("reply S64F2 .")
        reply = link.peer.reply(number)
        assert (reply["stream"], reply["function"]) == (64, 2), reply
    link.hexmire.say("set T3Timeout 30")
    still_talks(link)


def direction_bit(link):
    """An equipment sets the R-bit of each block."""
    link.peer.answer(1, 1, "0100")
    link.hexmire.send("S1F1")
    if link.peer_name == "secs4js":
        link.hexmire.take(event="error", code=3021)
        link.hexmire.take(event="error", code=2012)
        link.note("as equipment leaves the R-bit clear: Hexmire drops each message with error 3021. In all other "
                  "scenes the program of the peer sets the bit")
    else:
        link.hexmire.secondary(1, 2)


def one_block_only(link):
    """A message of two blocks, both ways, with a peer that has no line protocol beyond the first."""
    link.peer.answer(7, 3, "echo")
    link.hexmire.send(f"S7F3 W <A '{'x' * 300}'>.")
    assert "block 2 of 2" in link.hexmire.take(event="error", code=3010)["text"]
    link.restart_peer()
    link.hexmire.unexpected_errors()
    still_talks(link)
    link.hexmire.say("set T4Timeout 1")
    link.peer.request(7, 3, text("x" * 300).hex())
    link.hexmire.take(event="error", code=3004)
    link.restart_peer()
    link.hexmire.unexpected_errors()
    still_talks(link)
    raise NotPossible("sends the second and later blocks of a message without an ENQ and takes our ENQ for the "
                      "length of a block, so no message of more than one block gets through: Hexmire reports 3010 "
                      "for block 2 of its own, 3004 for the rest of one that does not come. With another process "
                      "at the other end the line goes on")


def linktest(link):
    """The peer tests the link, and Hexmire does: at once when a second caller knocks, else after 30 s."""
    link.peer.do("linktest")
    answer = link.peer.take_any([{"event": "linktest"}, {"event": "unsupported"}])
    assert answer is not None, link.peer.story()
    before = len(link.hexmire.trace())
    if link.mode == "active":
        with socket.create_connection(("127.0.0.1", link.port), sides.PATIENCE) as second:
            assert second.recv(1) == b"", "a second caller is not kept"
        link.hexmire.take(event="error", code=3041)
    else:
        time.sleep(30)  # the pause after which Hexmire tests a link on which nothing comes
    asked = link.hexmire.expect_traced("Send", LINKTEST_REQ, before)
    link.hexmire.expect_traced("Recv", LINKTEST_RSP, asked)
    still_talks(link)
    if answer["event"] == "unsupported":  # but it may do so by itself when the link is quiet
        link.hexmire.unexpected_errors()
        link.settings = {"linktest": 1}
        link.restart()
        asked = link.hexmire.expect_traced("Recv", LINKTEST_REQ)
        link.hexmire.expect_traced("Send", LINKTEST_RSP, asked)
        still_talks(link)


def late_reply(link):
    """A reply after T3: error 2012, and 2013 when it comes; the link goes on. Both directions."""
    link.peer.answer(1, 1, "0100", delay=1.7)
    link.hexmire.send("S1F1")
    link.hexmire.take(event="error", code=2012)
    link.hexmire.secondary(1, 2)
    link.hexmire.take(event="error", code=2013)
    link.hexmire.say("set T3Timeout 30")
    still_talks(link)
    number = link.peer.request(64, 1)
    link.hexmire.primary(64, 1)
    assert link.peer.outcome(number)["event"] == "timeout"
    link.hexmire.say("reply S64F2 .")
    still_talks(link)


def wrong_function(link):
    """A reply S1F4 to S1F1: error 2013, then 2012; the link goes on. Both directions where Hexmire can."""
    link.peer.answer(1, 1, "0100", reply=[1, 4])
    link.hexmire.send("S1F1")
    link.hexmire.secondary(1, 4)
    link.hexmire.take(event="error", code=2013)
    link.hexmire.take(event="error", code=2012)
    link.hexmire.say("set T3Timeout 30")
    still_talks(link)
    if link.hexmire.role == "equipment":
        link.hexmire.say("misbehave S1F1 wrong-function")
        ask(link, "S1F1", 1, 1)  # once this is sent the command before it counts
        outcome = link.peer.outcome(link.peer.request(1, 1))
        if outcome["event"] == "reply":
            assert outcome["function"] == 4, outcome
            link.note("takes any function for the reply when the system bytes fit")
        still_talks(link)


def top_bit(link):
    """System bytes from 0x80000000 up come back as they were."""
    for system in (0x80000000, 0xFFFFFFFE):
        number = link.peer.request(1, 1, system=system)
        if link.hexmire.role == "host":
            link.hexmire.primary(1, 1)
            link.hexmire.say("reply S1F2 <L>.")
        reply = link.peer.reply(number)
        assert (reply["function"], reply["system"]) == (2, system), reply
    still_talks(link)


def separate(link):
    """Either side ends the session."""
    link.peer.do("separate")
    if link.peer.take_any([{"event": "unsupported"}], 0.3):
        raise NotPossible("it has no Separate of its own")
    link.hexmire.take(event="disconnect", code=3035)
    link.hexmire.unexpected_errors()
    link.restart()
    link.hexmire.say("disconnect")
    link.hexmire.take(event="disconnect", code=0)
    link.peer.take(event="closed")


def peer_is_killed(link):
    """kill -9 of the peer; a new one is talked to."""
    link.restart_peer()
    link.hexmire.unexpected_errors()
    still_talks(link)


def hexmire_is_killed(link):
    """kill -9 of Hexmire; a new one is talked to."""
    link.hexmire.kill()
    if link.transport != "serial":
        link.peer.take(event="closed")
    link.start_hexmire()
    link.wait_until_up(peer=link.transport != "serial")
    still_talks(link)


def both_select(link):
    """Two active ends whose connections are joined: each gets a Select.req while its own is under way."""
    link.meet_at_a_relay()
    link.hexmire.expect_traced("Send", SELECT_REQ)
    link.hexmire.expect_traced("Recv", SELECT_REQ)
    link.hexmire.take(event="connect")
    link.peer.take(event="selected")
    if link.peer_name == "secs4js":
        link.hexmire.take(event="error", code=3033)
        link.note("rejects a Select.req while its own is under way (Reject.req, reason 1): Hexmire reports 3033, "
                  "and is selected by the other one")
    still_talks(link)


class Scene:
    """`fresh`: on a link of its own, which is made with `settings`."""

    def __init__(self, name, act, transports=ANY, roles=("equipment", "host"),
                 modes=("active", "passive"), **settings):
        self.name, self.act, self.transports, self.roles, self.modes = name, act, transports, roles, modes
        self.settings = settings

    def fits(self, transport, role, mode):
        callers = transport == "serial" or mode in self.modes
        return transport in self.transports and role in self.roles and callers


SHORT_T3 = {"t3": 1, "peer_t3": 2}
SCENES = [
    Scene("connect and select", select),
    Scene("S1F13 and S1F14", establish),
    Scene("S1F1 and S1F2", are_you_there),
    Scene("every item format there and back", every_format),
    Scene("empty and nested lists", lists),
    Scene("a recipe of 1 MB", long_recipe),
    Scene("1000 events while the host queries", events),
    Scene("system bytes with the top bit set", top_bit),
    Scene("linktest", linktest, HSMS),
    Scene("separate", separate, HSMS),
    Scene("a reply after T3", late_reply, **SHORT_T3),
    Scene("a reply of a wrong function", wrong_function, **SHORT_T3),
    Scene("the same system bytes on both sides", same_system_bytes, **SHORT_T3),
    Scene("R-bit of the equipment", direction_bit, SECS_I, roles=("equipment",), r_bit=False, **SHORT_T3),
    Scene("kill -9 of the peer", peer_is_killed, fresh=True),
    Scene("kill -9 of Hexmire", hexmire_is_killed, fresh=True),
    Scene("both sides select at once", both_select, HSMS, modes=("active",), relay=True),
]
