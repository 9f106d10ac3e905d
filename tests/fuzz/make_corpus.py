#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
"""Writes the seeds of the fuzz targets: valid inputs, and useful wrong ones."""

import base64
import pathlib
import shutil
import struct
import sys

USAGE = """Usage: tests/fuzz/make_corpus.py
Write the seeds of all fuzz targets into tests/fuzz/corpus and remove the old ones. They are
committed; run this after a change of the messages or of a target's input.

  -h, --help   Print this text and exit.
"""


# Protocol buffers without a library, because seeds may be wrong messages.
def varint(value):
    out = b""
    value &= 2**64 - 1
    while value > 127:
        out += bytes([value & 127 | 128])
        value >>= 7
    return out + bytes([value])


def number(field, value):
    return varint(field << 3) + varint(value)


def block(field, content):
    return varint(field << 3 | 2) + varint(len(content)) + content


def message(event, member, body, transaction=0):
    """A message to the client with one member of its data."""
    head = number(1, event) + (number(2, transaction) if transaction else b"")
    return head + block(3, block(member, body))


def lce_report(error, rate=1000, level=5, direction=1, queue=7):
    values = number(1, rate) + number(2, level) + number(3, direction) + number(4, queue)
    return values + block(5, error)


def lle_report(status=1, rat=2, interval=100):
    return (number(1, status) + number(2, 257) + number(3, 2**40) + number(4, 2**64 - 1)
            + number(5, 300) + number(6, 20) + number(7, 3) + number(8, interval) + number(9, rat))


def lli_indication(phase, pre=0, source=3, target=6):
    return (number(1, phase) + number(2, pre) + number(3, source) + number(4, target)
            + number(5, 2**63) + number(6, 50))


LCE = {
    "status_success": message(0, 1, number(1, 1)),
    "status_invalid_slot": message(0, 1, number(1, 8)),
    "status_unknown": message(0, 1, number(1, -1)),
    "status_without_data": number(1, 0),
    "last_report": message(1, 2, lce_report(b"NONE")),
    "last_report_without_criteria": message(1, 2, lce_report(b"REPORTING_CRITERIA_NOT_SET")),
    "report": message(2, 3, lce_report(b"NONE", 2**32 - 1, 7, 0)),
    "report_unknown_numbers": message(2, 3, lce_report(b"other", 1, 8, 2)),
    "report_percent": message(2, 3, lce_report(b"100%n %s %d%%")),
    "report_long_percent": message(2, 3, lce_report(b"%" * 600)),
    "report_long_odd_percent": message(2, 3, lce_report(b"x" + b"%" * 600)),
    "report_nul": message(2, 3, lce_report(b"a\0b")),
    "report_not_utf8": message(2, 3, lce_report(b"\xff\xfe")),
    "wrong_member": message(1, 3, lce_report(b"NONE")),
    "answer_accepted": message(3, 4, number(1, 1) + block(2, b"NONE"), 1),
    "answer_mismatch": message(3, 4, block(2, b"REPORTING_CRITERIA_TYPE_MISMATCH"), 1),
    "answer_invalid": message(3, 4, block(2, b"INVALID_ARGUMENTS"), 1),
    "answer_to_nobody": message(3, 4, block(2, b"%s"), 2**40),
    "unknown_event": message(9, 1, number(1, 1)),
    "cut_short": message(2, 3, lce_report(b"NONE"))[:-3],
}
LLE = {
    "status_service_up": message(0, 1, number(1, 6)),
    "status_unknown": message(0, 1, number(1, 10)),
    "last_report": message(1, 2, lle_report()),
    "last_report_invalid": message(1, 2, lle_report(0)),
    "report": message(2, 3, lle_report(interval=0)),
    "report_unknown_rat": message(2, 3, lle_report(rat=77)),
    "wrong_member": message(2, 2, lle_report()),
    "unknown_event": message(3, 3, lle_report()),
    "empty_report": message(1, 2, b""),
    "cut_short": message(2, 3, lle_report())[:-1],
}
LLI = {
    "status_service_down": message(0, 1, number(1, 7)),
    "pre_handoff": message(1, 2, lli_indication(0)),
    "pre_handoff_exit": message(1, 2, lli_indication(0, 1)),
    "handoff_start": message(1, 2, lli_indication(1)),
    "handoff_imminent": message(1, 2, lli_indication(4, 1, 0, 11)),
    "unknown_numbers": message(1, 2, lli_indication(5, 2, 12, -1)),
    "empty_indication": message(1, 2, b""),
    "status_in_its_place": message(1, 1, number(1, 1)),
    "unknown_event": message(2, 2, lli_indication(1)),
    "cut_short": message(1, 2, lli_indication(1))[:-2],
}


def frame(payload, message_id=5, source=1, destination=105, subsystem=0, session=1, length=None):
    size = len(payload) if length is None else length
    words = (source, destination, message_id, subsystem, session, size)
    return struct.pack("<QQQqQQ", *words) + payload


def carried(kind, blob=b""):
    return struct.pack("<I", kind) + blob


SEND_BLOB = {
    "nothing": b"",
    "three_bytes": b"\7\0\0",
    "type_alone": carried(8),
    "lce": carried(7, LCE["report"]),
    "other_client": carried(6, b"x"),
    "unknown_type": carried(2**32 - 1, b"x"),
}
FRAMES = {
    "blob": frame(carried(7, LCE["report"])),
    "two_blobs": frame(carried(7, b"one")) + frame(carried(9, b"two"), destination=107),
    "empty_payload": frame(b"") + frame(carried(8)),
    "short_blob": frame(b"\7\0"),
    "unknown_id": frame(b"x", 99) + frame(carried(7)),
    "local_ids": b"".join(frame(b"xxxx", i) for i in range(1, 5)),
    "incomplete_entries": frame(b"xxxx", 6) + frame(b"xxxx", 7),
    "id_beyond_32_bits": frame(carried(7), 2**32 + 5),
    "header_cut": frame(b"")[:30],
    "length_cut": frame(b"")[:41],
    "payload_like_a_header": frame(b"\xff" * 48),
    "payload_cut": frame(carried(7, b"abc"), length=100),
    "huge_length": frame(b"abc", length=2**64 - 1),
    "wrapping_length": frame(b"abc", length=2**64 - 48),
    "greatest_words": frame(b"", 2**64 - 1, 2**63, 2**64 - 1, -1, 2**64 - 1),
}


# The trace: switches, then the bytes of one direction.
TO_DAEMON, TO_CLIENT, NO_HANDSHAKE, IN_PIECES = 0, 1, 2, 7 << 2
RESPONSE = struct.pack("<III", 2, 1, 105)
TRACE = {
    "handshake_to_client": bytes([TO_CLIENT]) + struct.pack("<IIII", 1, 1, 3, 1)
                           + frame(carried(7, LCE["report"])),
    "handshake_to_daemon": bytes([TO_DAEMON]) + RESPONSE
                           + frame(carried(9, block(3, block(2, number(1, 1)))), source=107),
    "wrong_record": bytes([TO_CLIENT]) + struct.pack("<IIII", 9, 1, 3, 1),
    "lle_in_pieces": bytes([TO_CLIENT | NO_HANDSHAKE | IN_PIECES])
                     + frame(carried(8, LLE["report"])) + frame(carried(8, LLE["report"])),
    "lli": bytes([TO_CLIENT | NO_HANDSHAKE]) + frame(carried(9, LLI["handoff_start"])),
    "control_characters": bytes([TO_CLIENT | NO_HANDSHAKE])
                          + frame(carried(7, message(3, 4, block(2, b"\x1b[2J\n\x9b\xff")))),
    "lists": bytes([TO_DAEMON | NO_HANDSHAKE])
             + frame(carried(7, block(3, block(2, block(3, b"\1\2\3") + number(5, 4) * 3)))),
    "unknown_fields": bytes([NO_HANDSHAKE]) + frame(carried(
        7, number(9, 1) + block(10, b"x") + varint(11 << 3 | 5) + b"abcd" + varint(12 << 3 | 1)
        + b"abcdefgh" + varint(13 << 3 | 3) + number(1, 1) + varint(13 << 3 | 4))),
    "oneof_again": bytes([NO_HANDSHAKE]) + frame(carried(
        7, block(3, block(1, number(1, 1)) + block(4, number(1, 2))))),
    "message_alone": bytes([NO_HANDSHAKE]) + LCE["report"],
    "too_long": bytes([NO_HANDSHAKE]) + frame(b"abc", length=2**64 - 1) + frame(b""),
    "payload_cut": bytes([NO_HANDSHAKE | IN_PIECES]) + frame(carried(7, b"abc"), length=100),
    "no_service": bytes([NO_HANDSHAKE]) + frame(carried(3, b"x")) + frame(b"x", 6) + frame(b"\7"),
}


# Steps of the handshake target, see its source.
def piece(content):
    return bytes([len(content)]) + content


def init(session):
    return bytes([64 + session])


def complete(session):
    return bytes([128 + session])


DAEMON_CLOSES, APPLICATION_CLOSES = b"\0", b"\1"  # at the end
APPLICATION_GIVES_UP, DAEMON_STOPS = b"\xc0", b"\xe0"  # before it
REGULAR = init(1) + complete(1) + DAEMON_CLOSES
HANDSHAKE = {
    "regular_daemon_closes": REGULAR,
    "regular_application_closes": init(1) + complete(1) + APPLICATION_CLOSES,
    "four_times": (REGULAR + init(3) + complete(3) + APPLICATION_CLOSES) * 2,
    "two_inits": init(1) + init(2) + complete(2) + DAEMON_CLOSES,
    "session_zero": init(0) + complete(0) + DAEMON_CLOSES,
    "complete_at_once": complete(0) + DAEMON_CLOSES,
    "other_session": init(1) + complete(2),
    "failed_then_regular": complete(5) + REGULAR,
    "half_a_record": piece(struct.pack("<ii", 1, 1)[:5]) + piece(struct.pack("<ii", 1, 1)[5:]),
    "two_records_at_once": piece(struct.pack("<iiii", 1, 1, 3, 1)),
    "record_and_frame": init(1) + piece(struct.pack("<ii", 3, 1) + frame(b"")),
    "unknown_type": piece(struct.pack("<ii", 2, 1)),
    "negative_session": (piece(struct.pack("<ii", 1, -1)) + piece(struct.pack("<ii", 3, -1))
                         + DAEMON_CLOSES),
    "closed_while_waiting": init(1) + APPLICATION_GIVES_UP,
    "closed_before_anything": APPLICATION_GIVES_UP,
    "daemon_stops_after_init": init(1) + DAEMON_STOPS + REGULAR,
}

# Steps of the daemon target, by their index in its source's list.
(ENABLE, CREATE, DISABLE, DESTROY, REQUEST, BURST, ARM, AWAIT, SERVE, ACCEPT, RECORD, FRAME, BLOB,
 BYTES, DRAIN, CLOSE, SHUT, LISTENER) = range(18)
ON, OFF = 0, 2  # verbs of actions inside callbacks


def steps(*parts):
    return b"".join(bytes([part]) if isinstance(part, int) else part for part in parts)


def blob(service, content, connection=0):
    return steps(BLOB, connection, service, piece(content))


def enabled(service):
    return steps(ENABLE, service, SERVE)


def handshake(connection, session):
    return steps(ACCEPT, RECORD, connection, 1, session, 0, DRAIN, connection,
                 RECORD, connection, 3, session, 0)


DAEMON = {
    "enable_and_disable": steps(enabled(0), DRAIN, 0, DISABLE, 0),
    "lce": steps(enabled(0), REQUEST, 0, 0, REQUEST, 0, 2, REQUEST, 0, 68, REQUEST, 0, 6, DRAIN, 0,
                 blob(0, LCE["last_report"]), blob(0, LCE["report"]),
                 blob(0, LCE["status_success"]), AWAIT, 0, DISABLE, 0),
    "lle": steps(CREATE, 1, SERVE, REQUEST, 1, 1, REQUEST, 1, 3, blob(1, LLE["last_report"]),
                 blob(1, LLE["report"]), AWAIT, 1, DESTROY, 1),
    "lli": steps(enabled(2), REQUEST, 2, 0, blob(2, LLI["handoff_start"]), AWAIT, 2, DISABLE, 2),
    "all_services": steps(enabled(0), enabled(1), enabled(2), blob(0, LCE["report"], 0),
                          blob(1, LLE["report"], 1), blob(2, LLI["pre_handoff"], 2), DISABLE, 1),
    "both_generations": steps(enabled(0), CREATE, 0, blob(0, LCE["status_unknown"]), AWAIT, 0),
    "wrong_service": steps(enabled(0), blob(1, LLE["report"]), blob(200, b"x")),
    "daemon_dies": steps(enabled(0), CLOSE, 0, AWAIT, 0, REQUEST, 0, 2, SERVE),
    "daemon_restarts": steps(enabled(0), LISTENER, 1, AWAIT, 0, LISTENER, 2, REQUEST, 0, 2, SERVE),
    "refused_handshake": steps(ENABLE, 0, ACCEPT, RECORD, 0, 3, 5, 0, AWAIT, 0),
    "silent_daemon": steps(ENABLE, 0, ACCEPT, DISABLE, 0),
    "absent_daemon": steps(LISTENER, 0, ENABLE, 0, REQUEST, 0, 2, DISABLE, 0),
    "stops_after_init": steps(ENABLE, 1, ACCEPT, RECORD, 0, 1, 1, 0, DRAIN, 0, DISABLE, 1),
    "same_session_twice": steps(ENABLE, 0, handshake(0, 1), ENABLE, 1, handshake(1, 1)),
    "does_not_read": steps(enabled(0), BURST, 0, 2, 255, DISABLE, 0),
    "disable_in_callback": steps(enabled(0), ARM, 0, OFF, 0, blob(0, LCE["status_success"]),
                                 AWAIT, 0, ENABLE, 0),
    "disable_other_in_callback": steps(enabled(0), enabled(1), ARM, 0, OFF, 1,
                                       blob(0, LCE["status_success"]), AWAIT, 0),
    "enable_when_lost": steps(enabled(0), ARM, 0, ON, 1, CLOSE, 0, AWAIT, 0, SERVE, SERVE),
    "bad_frames": steps(enabled(0), FRAME, 0, 4, 1, piece(b""),
                        FRAME, 0, 63, 1, 1, 1, 1, 1, piece(b"abc"), 17),
    "half_a_frame": steps(enabled(0), BYTES, 0, piece(frame(b"")[:20]), SHUT, 0, 1, AWAIT, 0),
}

# The modulus of a key of 2048 bits without a private half.
MODULUS = b"\0\xc3" + bytes((7 * i + 11) % 256 for i in range(254)) + b"\x0d"


def der(tag, content):
    size = len(content)
    length = bytes([size]) if size < 128 else b"\x82" + struct.pack(">H", size)
    return bytes([tag]) + length + content


def public_key(modulus=MODULUS, exponent=b"\1\0\1"):
    rsa = der(0x30, der(0x02, modulus) + der(0x02, exponent))
    algorithm = der(0x30, bytes.fromhex("06092a864886f70d0101010500"))
    return der(0x30, algorithm + der(0x03, b"\0" + rsa))


def pem(key):
    text = base64.b64encode(key).decode()
    lines = [text[i:i + 64] for i in range(0, len(text), 64)]
    marked = ["-----BEGIN PUBLIC KEY-----", *lines, "-----END PUBLIC KEY-----", ""]
    return "\n".join(marked).encode()


def head(records=3000, files=3):
    return struct.pack("<QB", records, files)


# Switches of the log's target, see its source.
TEXT, BINARY, ALL_OTHERS, FILES_STAY = b"\0", b"\1", b"\x0e", b"\x11"
LOG_CONFIG = {
    "nothing": b"",
    "text_key": TEXT + head() + pem(public_key()),
    "text_in_front": TEXT + head() + b"a comment\n" + pem(public_key()),
    "text_key_other_switches": ALL_OTHERS + head(2**64 - 1, 255) + pem(public_key()),
    "binary_key": BINARY + head(0, 0) + public_key(),
    "binary_key_files_stay": FILES_STAY + head() + public_key(),
    "small_key": BINARY + head() + public_key(MODULUS[:40] + b"\1"),
    "key_of_3072_bits": BINARY + head() + public_key(MODULUS[:-1] + MODULUS[2:130] + b"\1"),
    "key_of_8192_bits": BINARY + head() + public_key(MODULUS[:-1] + MODULUS[2:] * 3 + b"\1"),
    "even_modulus": BINARY + head() + public_key(MODULUS[:-1] + b"\2"),
    "exponent_one": BINARY + head() + public_key(exponent=b"\1"),
    "huge_exponent": BINARY + head() + public_key(exponent=MODULUS),
    "no_key": TEXT + head(),
    "head_cut": TEXT + head()[:5],
    "not_a_key": TEXT + head() + pem(b"\0\0\0"),
    "key_without_end": TEXT + head() + pem(public_key())[:200],
}


# Steps of the reader's target, see its source. The first byte has its switches.
def good(text, other=False):
    return bytes([len(text) + (128 if other else 0)]) + text


def plain(content):
    return bytes([200 + len(content)]) + content


HEADER, OTHER_HEADER, UNREADABLE, ZERO, DAMAGE = b"\xc0", b"\xc1", b"\xc2", b"\xc3", b"\xff"
LINE = b"2025-05-24 13:02:07.045  1234  1240 E ORB : |ORB|Log::init:225 cannot open liborbalog.so"
ORBLOG = {
    "nothing": b"",
    "two_records": b"\1" + HEADER + good(LINE) + good(b"second"),
    "in_pieces": b"\x69" + HEADER + good(LINE) + good(b"second"),
    "byte_by_byte": b"\x09" + HEADER + good(LINE) + good(b""),
    "wrapped_key": b"\5" + HEADER + good(LINE) + OTHER_HEADER + good(b"x", True),
    "other_key": b"\1" + HEADER + good(b"a") + good(b"b", True) + good(b"c"),
    "no_header": b"\1" + good(LINE[:60], True),
    "zero_header": b"\1" + ZERO + good(LINE[:60], True),
    "unreadable_header": b"\1" + UNREADABLE + good(b"x", True),
    "second_header": b"\1" + HEADER + good(b"a") + HEADER + good(b"b"),
    "damaged_record": b"\1" + HEADER + good(b"a") + good(b"b") + DAMAGE + good(b"c"),
    "lost_bytes": b"\1" + HEADER + good(b"a") + plain(b"\xff\xff") + good(b"b"),
    "sealed_elsewhere": b"\1" + HEADER + good(b"a") + plain(
        bytes.fromhex("1c00" "010100000000000000000000" "0cb4d2813ddd42f2224801d65c315e95")),
    "no_budget": b"\3" + HEADER + good(b"a") + plain(b"\x1d\0" * 20) + good(b"b"),
    "cut_record": b"\1" + HEADER + good(b"a") + plain(b"\x40\0abc"),
    "header_cut": b"\0" + b"\xab" * 100,
    "bytes": b"\0\xab" + bytes(range(1, 256)) * 3,
    "controls": b"\1" + HEADER + good(b"\x1b[2J\r\n\x9b\xc2\x9b\xff\xed\xa0\x80\"\\"),
    "moment": b"\0" + b"2025-02-30 24:00",
    "line": b"\0" + LINE,
}

CORPUS = {
    "blob_lce": LCE, "blob_lle": LLE, "blob_lli": LLI, "send_blob": SEND_BLOB, "frames": FRAMES,
    "handshake": HANDSHAKE, "daemon": DAEMON, "log_config": LOG_CONFIG, "orblog": ORBLOG,
    "trace": TRACE,
}


def main():
    if len(sys.argv) > 1:
        wanted = sys.argv[1] in ("-h", "--help")
        print(USAGE, end="", file=sys.stdout if wanted else sys.stderr)
        return 0 if wanted else 2
    root = pathlib.Path(__file__).parent / "corpus"
    for target, seeds in CORPUS.items():
        shutil.rmtree(root / target, ignore_errors=True)
        (root / target).mkdir(parents=True)
        for name, content in seeds.items():
            (root / target / name).write_bytes(content)
    return 0


if __name__ == "__main__":
    sys.exit(main())
