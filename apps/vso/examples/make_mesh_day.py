#!/usr/bin/env python3
"""Writes the recording of a day in a made-up mesh, for `vso replay`: always the same one.

    make_mesh_day.py > mesh-day.txt

Twelve devices and two access points in a house of two floors. Most are well. "Hall lamp" reboots far too often, "Garden
socket" has joined in the evening and loses its routes, and "Attic sensor" sleeps. A few frames are damaged, and one comes
from a neighbour's device.
"""

import calendar
import math
import random
import struct
from functools import partial

START = calendar.timegm((2026, 3, 14, 0, 0, 0))
HOUR = 3600
END = START + 24 * HOUR
PAN = 0x5160_0A2B_3C4D_5E6F

COORDINATOR, ROUTER, END_DEVICE, SLEEPY = 1, 2, 3, 4  # as devices announce themselves
BOOLEAN, UINT8, UINT16, UINT32, INT8, OCTETS, TEXT = 0x10, 0x20, 0x21, 0x23, 0x28, 0x41, 0x42

ANNOUNCE = (0xC25F, 0x0001)
DIAGNOSTICS = (0xC25D, 0x0002)
METRICS = (0x0104, 0x0B05)
ON_OFF = (0x0104, 0x0006)
LQI = (0x0000, 0x8031)
ROUTES = (0x0000, 0x8032)
NETWORK_STATUS = (0xFFFF, 0x0003)
SOURCE_ROUTE_FAILURE, MANY_TO_ONE_ROUTE_FAILURE = 0x0B, 0x0C


class Device:
    """A device at a place of the house, in metres."""

    def __init__(self, number, address, kind, product, place, joined=START):
        self.euid = 0x0017_8801_00A0_0000 + number
        self.address = address
        self.kind = kind
        self.product = product
        self.place = place
        self.joined = joined
        self.boots = 3 + number
        self.sequence = 17 * number % 256

    def next_sequence(self):
        self.sequence = (self.sequence + 1) % 256
        return self.sequence


AP_CELLAR = Device(1, 0x0000, COORDINATOR, "qx:zap", (1, 2, 0))
AP_OFFICE = Device(2, 0x7A01, ROUTER, "qx:zap", (9, 6, 3))
APS = [AP_CELLAR, AP_OFFICE]

NODES = [
    Device(16, 0x1C02, ROUTER, "qx:dimmer", (3, 2, 0)),
    Device(17, 0x2D11, ROUTER, "qx:dimmer", (5, 3, 0)),
    Device(18, 0x3E20, ROUTER, "qx:switch", (7, 2, 0)),
    Device(19, 0x4F3F, ROUTER, "qx:lamp", (4, 6, 0)),  # Hall lamp
    Device(20, 0x504E, ROUTER, "qx:lamp", (8, 5, 0)),
    Device(21, 0x615D, ROUTER, "qx:socket", (2, 7, 3)),
    Device(22, 0x726C, ROUTER, "qx:thermostat", (6, 7, 3)),
    Device(23, 0x837B, END_DEVICE, "qx:keypad", (8, 8, 3)),
    Device(24, 0x948A, END_DEVICE, "qx:keypad", (1, 5, 0)),
    Device(25, 0xA599, SLEEPY, "qx:motion", (5, 8, 3)),
    Device(26, 0xB6A8, SLEEPY, "qx:contact", (2, 9, 6)),  # Attic sensor
    Device(27, 0xC7B7, ROUTER, "qx:socket", (14, 9, 0), START + 20 * HOUR),  # Garden socket
]
HALL_LAMP, MOTION_SENSOR, ATTIC_SENSOR, GARDEN_SOCKET = NODES[3], NODES[9], NODES[10], NODES[11]


def link_quality(a, b):
    """0 to 255, by distance; a floor counts for some metres more."""
    distance = math.dist(a.place, b.place) + abs(a.place[2] - b.place[2])
    return max(0, min(255, round(275 - 16 * distance)))


def neighbours(device):
    others = [other for other in APS + NODES if other is not device and link_quality(device, other) >= 90]
    return sorted(others, key=lambda other: -link_quality(device, other))


def parent(device):
    """The router or access point that an end device goes through."""
    return next(other for other in neighbours(device) if other.kind in (COORDINATOR, ROUTER))


def signal_strength(device):
    """In dBm, at the best access point."""
    return round(-95 + max(link_quality(device, ap) for ap in APS) / 5)


def attribute(number, kind, value):
    formats = {BOOLEAN: "<B", UINT8: "<B", UINT16: "<H", UINT32: "<I", INT8: "<b"}
    data = struct.pack(formats[kind], value) if kind in formats else bytes([len(value)]) + value
    return struct.pack("<HB", number, kind) + data


def report(device, *attributes):
    return bytes([0x18, device.next_sequence(), 0x0A]) + b"".join(attributes)


def read_response(device, *attributes):
    """Each attribute with its status, which is success."""
    records = b"".join(record[:2] + b"\0" + record[2:] for record in attributes)
    return bytes([0x18, device.next_sequence(), 0x01]) + records


def announcement(device):
    # What the mesh has of access points, the best first; addresses most significant byte first.
    known = sorted(APS, key=lambda ap: -link_quality(device, ap))
    attributes = [
        attribute(0x0000, UINT8, device.kind),
        attribute(0x0001, UINT16, 300),
        attribute(0x0003, UINT8, len(known)),
        attribute(0x0004, TEXT, b"4.2.11"),
        attribute(0x0005, UINT8, 2),
        attribute(0x0006, UINT16, device.boots),
        attribute(0x0007, TEXT, device.product.encode()),
        attribute(0x000C, UINT8, 20),
        attribute(0x0012, OCTETS, b"".join(struct.pack(">H", ap.address) for ap in known)),
        attribute(0x0013, INT8, signal_strength(device)),
        attribute(0x0014, UINT8, max(link_quality(device, ap) for ap in APS)),
    ]
    if device.kind == SLEEPY:
        attributes.append(attribute(0x0015, INT8, 80))
    return report(device, *attributes)


def neighbour_row(device, other):
    kind = {COORDINATOR: 0, ROUTER: 1}.get(other.kind, 2)
    rx_on_when_idle = 0 if other.kind == SLEEPY else 1
    relationship = 2
    if device.kind in (END_DEVICE, SLEEPY):
        relationship = 0
    elif other.kind in (END_DEVICE, SLEEPY):
        relationship = 1
    flags = kind | rx_on_when_idle << 2 | relationship << 4
    depth = 0 if other.kind == COORDINATOR else 1
    return struct.pack("<QQHBBBB", PAN, other.euid, other.address, flags, 2, depth, link_quality(device, other))


def pages(device, rows, rows_a_page):
    """A table as the answers to the requests for its pages."""
    for start in range(0, max(len(rows), 1), rows_a_page):
        page = rows[start : start + rows_a_page]
        yield bytes([device.next_sequence(), 0, len(rows), start, len(page)]) + b"".join(page)


def neighbour_pages(device):
    if device.kind in (END_DEVICE, SLEEPY):
        known = [parent(device)]
    else:
        # Only its parent knows an end device.
        known = [other for other in neighbours(device) if other.kind in (COORDINATOR, ROUTER) or parent(other) is device]
    return pages(device, [neighbour_row(device, other) for other in known], 3)


def next_hop(device, ap):
    """The neighbour that is nearest to the access point, if it is not the access point itself."""
    routers = [other for other in neighbours(device) if other.kind in (COORDINATOR, ROUTER)]
    if ap in routers and link_quality(device, ap) >= 150:
        return ap
    return min(routers, key=lambda other: math.dist(other.place, ap.place))


def route_pages(device):
    many_to_one, active = 0x10, 0
    rows = [
        struct.pack("<HBH", ap.address, active | many_to_one, next_hop(device, ap).address) for ap in APS if ap is not device
    ]
    return pages(device, rows, 8)


def counters(device, hours, chance):
    """The device's counters, most significant byte first."""
    sent = [40 * hours + chance.randrange(20) for _ in range(14)]
    sent[3] = sent[3] // 8
    sent[4] = sent[4] // 40
    return struct.pack(">15H", 1, *sent)


class Recording:
    """What happens, in any order; the frames are made in the order of their times."""

    def __init__(self):
        self.events = []

    def add(self, time, device, ids, make_frame):
        """`make_frame` makes one frame or yields several, which come a second after each other."""
        self.events.append((time, len(self.events), device, ids, make_frame))

    def write(self):
        print("# A day in a made-up mesh, written by make_mesh_day.py: time euid short-address profile cluster hex")
        lines = []
        for time, _, device, (profile, cluster), make_frame in sorted(self.events, key=lambda event: event[:2]):
            made = make_frame()
            for late, frame in enumerate([made] if isinstance(made, bytes) else made):
                ids = f"{device.euid:016x} 0x{device.address:04x} 0x{profile:04x} 0x{cluster:04x}"
                lines.append((time + late, len(lines), f"{time + late} {ids} {frame.hex()}"))
        for _, _, line in sorted(lines):
            print(line)


def announce(recording, chance):
    for device in NODES:
        step = 3 * HOUR if device.kind == SLEEPY else 6 * HOUR
        end = END - 5 * HOUR if device is ATTIC_SENSOR else END
        for time in range(device.joined + chance.randrange(300), end, step):
            recording.add(time, device, ANNOUNCE, partial(announcement, device))
    # Somebody has just walked by.
    recording.add(END - 20, MOTION_SENSOR, ANNOUNCE, partial(announcement, MOTION_SENSOR))


def reboot(recording, chance):
    """The hall lamp starts over 30 times between morning and night."""

    def boot():
        HALL_LAMP.boots += 1
        return announcement(HALL_LAMP)

    for time in chance.sample(range(START + 7 * HOUR, END - HOUR), 30):
        recording.add(time, HALL_LAMP, ANNOUNCE, boot)


def tell_tables(recording, chance):
    for device in APS + NODES:
        for time in range(device.joined + HOUR + chance.randrange(600), END, 2 * HOUR):
            recording.add(time, device, LQI, partial(neighbour_pages, device))
            if device.kind in (COORDINATOR, ROUTER):
                recording.add(time + 20, device, ROUTES, partial(route_pages, device))


def tell_counters(recording, chance):
    for device in NODES:
        if device.kind == SLEEPY:
            continue
        for time in range(device.joined + 2 * HOUR + chance.randrange(600), END, 6 * HOUR):
            hours = (time - device.joined) // HOUR
            counted = attribute(0x0002, OCTETS, counters(device, hours, chance))
            uptime = attribute(0x0003, UINT32, time - device.joined)
            recording.add(time, device, DIAGNOSTICS, partial(read_response, device, counted, uptime))
    for time in range(START + 3 * HOUR, END, 6 * HOUR):
        name, value = attribute(0x011E, TEXT, b"room.temperature"), attribute(0x011F, TEXT, b"21.5")
        recording.add(time, NODES[6], METRICS, partial(report, NODES[6], name, value))


def switch_lights(recording, chance):
    for device in NODES[:5]:
        for time in chance.sample(range(START + 6 * HOUR, END), 12):
            recording.add(time, device, ON_OFF, partial(report, device, attribute(0x0000, BOOLEAN, time % 2)))


def lose_routes(recording, chance):
    """The garden socket is too far away: it loses routes in both directions."""
    joined = GARDEN_SOCKET.joined + 300
    for time in chance.choices(range(joined, END), k=1600):
        status = struct.pack("<BH", MANY_TO_ONE_ROUTE_FAILURE, AP_OFFICE.address)
        recording.add(time, GARDEN_SOCKET, NETWORK_STATUS, lambda frame=status: frame)
    for time in chance.choices(range(joined, END), k=300):
        status = struct.pack("<BH", SOURCE_ROUTE_FAILURE, GARDEN_SOCKET.address)
        recording.add(time, NODES[4], NETWORK_STATUS, lambda frame=status: frame)


def disturb(recording, chance):
    """What any recording has: frames that lost their end, and a device of somebody else."""
    for time in chance.sample(range(START + HOUR, END), 6):
        device, size = chance.choice(NODES[:9]), chance.randrange(5, 30)
        recording.add(time, device, ANNOUNCE, lambda device=device, size=size: announcement(device)[:size])
    stranger = Device(200, 0x0BAD, ROUTER, "other", (20, 20, 0))
    recording.add(START + 9 * HOUR, stranger, ON_OFF, partial(report, stranger, attribute(0x0000, BOOLEAN, 1)))


def main():
    chance = random.Random(20260314)
    recording = Recording()
    for part in (announce, reboot, tell_tables, tell_counters, switch_lights, lose_routes, disturb):
        part(recording, chance)
    recording.write()


if __name__ == "__main__":
    main()
