#!/usr/bin/env python3
"""Has tshark, which knows nothing of this library, say what the library's frames mean.

    dissect.py PROGRAM

PROGRAM is the built `vso`. Each case below builds a frame with `vso encode --line`, which is wrapped in the layers that
carry it on the air; tshark dissects the whole capture at once, and its fields are compared with what went in. Every
command of `vso encode --list` is either in a case or among the known differences, which name their reason.

Exits with 77 where tshark is not installed.
"""
import os
import shutil
import struct
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ElementTree

SKIPPED = 77
SEQUENCE = 0x5A

# Differences between this system and the public standard.
NOT_IN_THE_STANDARD = {
    "level-control move": "the rate goes out in two bytes, one more than the standard has",
    "level-control move-with-on-off": "the rate goes out in two bytes, one more than the standard has",
    "time time": "the time goes out most significant byte first",
    "scenes un-recall-scene": "a command of the manufacturer's own",
    "announce report": "a profile of the manufacturer's own",
    "immediate-announce request": "a profile of the manufacturer's own",
    "sscp write": "a profile of the manufacturer's own",
    "sscp response": "a profile of the manufacturer's own",
    "sscp-packet image": "no frame of the standard at all",
    "set-zap response": "a profile of the manufacturer's own",
    "diagnostics read": "a profile of the manufacturer's own",
    "diagnostics reset-counters": "a profile of the manufacturer's own",
    "diagnostics display-signal-strength": "a profile of the manufacturer's own",
}

GROUPS = "zbee_zcl_general.groups."
SCENES = "zbee_zcl_general.scenes."
LEVEL = "zbee_zcl_general.level_control."
OTA = "zbee_zcl_general.ota."

# Names of the field that holds the command's identifier, by group.
GENERAL_COMMAND = "zbee_zcl.cmd.id"
GROUPS_COMMAND = GROUPS + "cmd_srv_rx.id"
SCENES_COMMAND = SCENES + "cmd.srv_rx.id"
ON_OFF_COMMAND = "zbee_zcl_general.onoff.cmd.srv_rx.id"
LEVEL_COMMAND = LEVEL + "cmd.srv_rx.id"
OTA_TO_DEVICE = OTA + "cmd.srv_tx.id"
OTA_TO_SERVER = OTA + "cmd.srv_rx.id"

IMAGE_WORDS = "--manufacturer-code 0x1040 --image-type 0x0203 --file-version 0x04050607"
IMAGE = {OTA + "manufacturer_code": [0x1040], OTA + "image.type": [0x0203], OTA + "file.version": [0x04050607]}
SCENE_WORDS = "--group-id 0x1234 --scene-id 5"
SCENE = {SCENES + "group_id": [0x1234], SCENES + "scene_id": [5]}
GROUP = {GROUPS + "group_id": [0x1234]}


def zcl(words, cluster, fields, from_server=False, specific=True):
    """A case of a ZCL frame: the header comes on top of the fields."""
    header = {
        "zbee_aps.profile": [0x0104],
        "zbee_aps.cluster": [cluster],
        "zbee_zcl.type": [int(specific)],
        "zbee_zcl.ms": [0],
        "zbee_zcl.dir": [int(from_server)],
        "zbee_zcl.ddr": [int("--disable-default-response" in words)],
        "zbee_zcl.cmd.tsn": [SEQUENCE],
    }
    return words, {**header, **fields}


def general(words, cluster, command, fields, from_server=False):
    return zcl(words, cluster, {GENERAL_COMMAND: [command], **fields}, from_server, specific=False)


def zdo(words, command, fields):
    return words, {"zbee_aps.profile": [0], "zbee_aps.zdp_cluster": [command], "zbee_zdp.seqno": [SEQUENCE], **fields}


CASES = [
    general("general read-attributes --cluster 6 --attribute 0 --attribute 0x4001", 6, 0,
            {"zbee_zcl_general.onoff.attr_id": [0, 0x4001]}),
    general("general read-attributes-response --cluster 8 --from-server --attribute 0:uint8:254"
            " --attribute 0x0010:uint16:300 --attribute 1:unsupported-attribute", 8, 1,
            {LEVEL + "attr_id": [0, 0x10, 1], "zbee_zcl.attr.status": [0, 0, 0x86],
             "zbee_zcl.attr.data.type": [0x20, 0x21], LEVEL + "attr.current_level": [254],
             LEVEL + "attr.onoff_transmit_time": [300]}, from_server=True),
    general("general no-read-attributes-response --cluster 8 --from-server --attribute 0x0011 --attribute 1", 8, 1,
            {LEVEL + "attr_id": [0x11, 1], "zbee_zcl.attr.status": [0x86, 0x86]}, from_server=True),
    general("general write-attributes --cluster 0 --attribute 0x0010:character-string:Hall --attribute 0x12:boolean:1"
            " --disable-default-response", 0, 2,
            {"zbee_zcl_general.basic.attr_id": [0x10, 0x12], "zbee_zcl.attr.data.type": [0x42, 0x10],
             "zbee_zcl.attr.str": ["Hall"], "zbee_zcl_general.basic.attr.dev_en": [1]}),
    general("general write-attributes-no-response --cluster 3 --attribute 0:uint16:300", 3, 5,
            {"zbee_zcl_general.identify.attr_id": [0], "zbee_zcl.attr.data.type": [0x21],
             "zbee_zcl_general.identify.attr.identify_time": [300]}),
    # Failures alone: the standard has no record for an attribute that was written, where this system has one.
    general("general write-attributes-response --cluster 0 --from-server --attribute 0x10:0x88 --attribute 0x12:0x87",
            0, 4, {"zbee_zcl_general.basic.attr_id": [0x10, 0x12], "zbee_zcl.attr.status": [0x88, 0x87]},
            from_server=True),
    general("general report-attributes --cluster 6 --from-server --attribute 0:boolean:true", 6, 10,
            {"zbee_zcl_general.onoff.attr_id": [0], "zbee_zcl.attr.data.type": [0x10],
             "zbee_zcl_general.onoff.attr.onoff": [1]}, from_server=True),
    # Attributes that no dissector knows by name show how a value of each type is made.
    general("general report-attributes --cluster 0x0702 --attribute 0x7000:int16:-2 --attribute 0x7001:octet-string:0aff"
            " --attribute 0x7002:single-float:1.5 --attribute 0x7003:bitmap24:0x010203"
            " --attribute 0x7004:ieee-address:0011223344556677 --attribute 0x7005:uint32:70000"
            " --attribute 0x7006:int8:-100 --attribute 0x7007:uint24:70001 --attribute 0x7008:int32:-70002"
            " --attribute 0x7009:bitmap16:0x0102", 0x0702, 10,
            {"zbee_zcl_se.met.attr_client_id": list(range(0x7000, 0x700A)),
             "zbee_zcl.attr.data.type": [0x29, 0x41, 0x39, 0x1A, 0xF0, 0x23, 0x28, 0x22, 0x2B, 0x19],
             "zbee_zcl.attr.int16": [-2], "zbee_zcl.attr.ostr": ["0a:ff"], "zbee_zcl.attr.float": ["1.5"],
             "zbee_zcl.attr.bitmap24": [0x010203], "zbee_zcl.attr.bytes": ["77:66:55:44:33:22:11:00"],
             "zbee_zcl.attr.uint32": [70000], "zbee_zcl.attr.int8": [-100], "zbee_zcl.attr.uint24": [70001],
             "zbee_zcl.attr.int32": [-70002], "zbee_zcl.attr.bitmap16": [0x0102]}),
    general("identify read-attributes-response --attribute 0:uint16:60", 3, 1,
            {"zbee_zcl_general.identify.attr_id": [0], "zbee_zcl.attr.status": [0], "zbee_zcl.attr.data.type": [0x21],
             "zbee_zcl_general.identify.attr.identify_time": [60]}),

    zcl("groups add-group --group-id 0x1234 --group-name Hall", 4,
        {GROUPS_COMMAND: [0], **GROUP, GROUPS + "attr_str_len": [4], "zbee_zcl_general.groups_attr_str": ["Hall"]}),
    zcl("groups view-group --group-id 0x1234", 4, {GROUPS_COMMAND: [1], **GROUP}),
    zcl("groups get-group-membership --group-ids 1,0x0203", 4,
        {GROUPS_COMMAND: [2], GROUPS + "group_count": [2], GROUPS + "group_id": [1, 0x0203]}),
    zcl("groups remove-group --group-id 0x1234 --disable-default-response", 4, {GROUPS_COMMAND: [3], **GROUP}),
    zcl("groups remove-all-groups", 4, {GROUPS_COMMAND: [4]}),
    zcl("groups add-group-if-identifying --group-id 0x1234 --group-name Hall", 4,
        {GROUPS_COMMAND: [5], **GROUP, GROUPS + "attr_str_len": [4], "zbee_zcl_general.groups_attr_str": ["Hall"]}),

    zcl(f"scenes add-scene {SCENE_WORDS} --transition-time 300 --scene-name Tea --extension 6:1 --extension 8:128", 5,
        {SCENES_COMMAND: [0], **SCENE, SCENES + "transit_time": [300], SCENES + "attr_str_len": [3],
         SCENES + "attr_str": ["Tea"], SCENES + "extension_set.cluster": [6, 8], SCENES + "extension_set.onoff": [1],
         SCENES + "extension_set.level": [128]}),
    zcl(f"scenes view-scene {SCENE_WORDS}", 5, {SCENES_COMMAND: [1], **SCENE}),
    zcl(f"scenes remove-scene {SCENE_WORDS}", 5, {SCENES_COMMAND: [2], **SCENE}),
    zcl("scenes remove-all-scenes --group-id 0x1234", 5, {SCENES_COMMAND: [3], SCENES + "group_id": [0x1234]}),
    zcl(f"scenes store-scene {SCENE_WORDS}", 5, {SCENES_COMMAND: [4], **SCENE}),
    zcl(f"scenes recall-scene {SCENE_WORDS}", 5, {SCENES_COMMAND: [5], **SCENE}),
    zcl("scenes get-scene-membership --group-id 0x1234", 5, {SCENES_COMMAND: [6], SCENES + "group_id": [0x1234]}),
    general("scenes get-scene-count", 5, 0, {SCENES + "attr_id": [0]}),

    zcl("on-off off", 6, {ON_OFF_COMMAND: [0]}),
    zcl("on-off on", 6, {ON_OFF_COMMAND: [1]}),
    zcl("on-off toggle", 6, {ON_OFF_COMMAND: [2]}),

    zcl("level-control move-to-level --level 128 --transition-time 300", 8,
        {LEVEL_COMMAND: [0], LEVEL + "level": [128], LEVEL + "transit_time": [300]}),
    zcl("level-control step --mode 1 --step-size 16 --transition-time 300", 8,
        {LEVEL_COMMAND: [2], LEVEL + "step_mode": [1], LEVEL + "step_size": [16], LEVEL + "transit_time": [300]}),
    zcl("level-control stop", 8, {LEVEL_COMMAND: [3]}),
    zcl("level-control move-to-level-with-on-off --level 255 --transition-time 300", 8,
        {LEVEL_COMMAND: [4], LEVEL + "level": [255], LEVEL + "transit_time": [300]}),
    zcl("level-control step-with-on-off --mode 0 --step-size 16 --transition-time 300", 8,
        {LEVEL_COMMAND: [6], LEVEL + "step_mode": [0], LEVEL + "step_size": [16], LEVEL + "transit_time": [300]}),
    zcl("level-control stop-with-on-off", 8, {LEVEL_COMMAND: [7]}),

    general("time status", 10, 1,
            {"zbee_zcl_general.time.attr_id": [1], "zbee_zcl.attr.status": [0], "zbee_zcl.attr.data.type": [0x18],
             "zbee_zcl_general.time.attr.time_status": [1], "zbee_zcl_general.time.attr.time_status.master": [1]}),

    zcl("ota image-notify --payload-type 0 --query-jitter 50", 0x19,
        {OTA_TO_DEVICE: [0], OTA + "payload.type": [0], OTA + "query_jitter": [50]}, from_server=True),
    zcl(f"ota image-notify --payload-type 3 --query-jitter 50 {IMAGE_WORDS}", 0x19,
        {OTA_TO_DEVICE: [0], OTA + "payload.type": [3], OTA + "query_jitter": [50], **IMAGE}, from_server=True),
    zcl(f"ota query-next-image-response {IMAGE_WORDS} --image-size 0x08090a0b", 0x19,
        {OTA_TO_DEVICE: [2], OTA + "status": [0], **IMAGE, OTA + "image.size": [0x08090A0B]}, from_server=True),
    zcl("ota query-next-image-response --status 0x98", 0x19, {OTA_TO_DEVICE: [2], OTA + "status": [0x98]},
        from_server=True),
    zcl(f"ota image-block-response {IMAGE_WORDS} --file-offset 0x08090a0b --data cafe01", 0x19,
        {OTA_TO_DEVICE: [5], OTA + "status": [0], **IMAGE, OTA + "file.offset": [0x08090A0B], OTA + "data_size": [3],
         OTA + "image.data": ["ca:fe:01"]}, from_server=True),
    zcl(f"ota upgrade-end-response {IMAGE_WORDS} --current-time 0x08090a0b --upgrade-time 0x0c0d0e0f", 0x19,
        {OTA_TO_DEVICE: [7], **IMAGE, OTA + "current_time": [0x08090A0B], OTA + "upgrade_time": [0x0C0D0E0F]},
        from_server=True),
    general("ota unsupported-command --command-id 9", 0x19, 0x0B,
            {"zbee_zcl.cmd.id.rsp": [9], "zbee_zcl.attr.status": [0x81]}, from_server=True),
    general("ota get-attributes", 0x19, 0, {OTA + "attr_id": [2, 7, 8]}, from_server=True),
    general("ota get-upgrade-status", 0x19, 0, {OTA + "attr_id": [6]}, from_server=True),
    zcl(f"ota image-page-request {IMAGE_WORDS} --file-offset 0x08090a0b --maximum-data-size 64 --page-size 1024"
        " --response-spacing 250 --request-node-address 0011223344556677", 0x19,
        {OTA_TO_SERVER: [4], OTA + "image_page_req.field_ctrl": [1], **IMAGE, OTA + "file.offset": [0x08090A0B],
         OTA + "max_data_size": [64], OTA + "page.size": [1024], OTA + "rsp_spacing": [250],
         OTA + "ieee_addr": [0x0011223344556677]}),
    zcl(f"ota upgrade-end-request --status 0x96 {IMAGE_WORDS}", 0x19, {OTA_TO_SERVER: [6], OTA + "status": [0x96], **IMAGE}),

    zdo("zdo lqi-request --start-index 9", 0x31, {"zbee_zdp.index": [9]}),
    zdo("zdo routing-request --start-index 10", 0x32, {"zbee_zdp.index": [10]}),
    zdo("zdo leave-request --device 0011223344556677 --options 0x40", 0x34,
        {"zbee_zdp.ext_addr": ["00:11:22:33:44:55:66:77"], "zbee_zdp.leave.children": [1], "zbee_zdp.leave.rejoin": [0]}),
    zdo("zdo permit-join-request --duration 60 --trust-centre-significance 1", 0x36,
        {"zbee_zdp.duration": [60], "zbee_zdp.significance": [1]}),
    zdo("zdo energy-scan --duration 5 --scan-count 2", 0x38,
        {"zbee_zdp.channel_mask": [0x07FFF800], "zbee_zdp.duration": [5], "zbee_zdp.scan_count": [2]}),
    zdo("zdo channel-change --channel-mask 0x8000 --update-id 9", 0x38,
        {"zbee_zdp.channel_mask": [0x8000], "zbee_zdp.duration": [0xFE], "zbee_zdp.update_id": [9]}),
    zdo("zdo manager-update --update-id 9 --manager-address 0x1234", 0x38,
        {"zbee_zdp.channel_mask": [0x07FFF800], "zbee_zdp.duration": [0xFF], "zbee_zdp.update_id": [9],
         "zbee_zdp.manager": [0x1234]}),
]

# Fields that tell parts of another field again, or the layers around the frame.
DERIVED_FIELDS = (
    OTA + "file.version.", OTA + "query_next_image_req.field_ctrl.", OTA + "image_page_req.field_ctrl.",
    GROUPS + "group_list", "zbee_zdp.channel_page", "zbee_zcl_general.time.attr.time_status.",
)


def vso(program, words):
    result = subprocess.run([program, "encode", *words.split()], capture_output=True, text=True, check=False)
    if result.returncode != 0:
        raise SystemExit(f"vso encode {words}: {result.stderr}")
    return result.stdout


def packet(line, number):
    """The frame in a data frame of each layer below: IEEE 802.15.4, network, application support."""
    profile, cluster, digits = line.split()
    profile, cluster = int(profile, 16), int(cluster, 16)
    endpoint = 0 if profile == 0 else 1
    mac = struct.pack("<HBHHH", 0x8841, number & 0xFF, 0x1AAA, 0x1234, 0x0000)
    network = struct.pack("<HHHBB", 0x0008, 0x1234, 0x0000, 30, number & 0xFF)
    support = struct.pack("<BBHHBB", 0x00, endpoint, cluster, profile, endpoint, number & 0xFF)
    return mac + network + support + bytes.fromhex(digits)


def capture(lines):
    """A capture file of IEEE 802.15.4 frames without check sequence."""
    link_type = 230
    file = struct.pack("<IHHiIII", 0xA1B2C3D4, 2, 4, 0, 0, 0xFFFF, link_type)
    for number, line in enumerate(lines):
        frame = packet(line, number)
        file += struct.pack("<IIII", number, 0, len(frame), len(frame)) + frame
    return file


def dissect(tshark, file):
    """Each packet as tshark sees it: its protocols, its fields with all their values, and how many bytes at its end no
    field covers."""
    with tempfile.TemporaryDirectory() as folder:
        name = os.path.join(folder, "frames.pcap")
        with open(name, "wb") as out:
            out.write(file)
        # A home of its own keeps the user's preferences out.
        result = subprocess.run([tshark, "-n", "-r", name, "-T", "pdml"], capture_output=True, text=True, check=False,
                                env={**os.environ, "HOME": folder, "XDG_CONFIG_HOME": folder, "LC_ALL": "C.UTF-8"})
    if result.returncode != 0:
        raise SystemExit(f"tshark: {result.stderr}")
    for element in ElementTree.fromstring(result.stdout).findall("packet"):
        fields = {}
        for field in element.iter("field"):
            fields.setdefault(field.get("name"), []).append(field.get("show"))
        protocols = element.findall("proto")
        # The headings of trees, which span what is in the tree and what is not, have no name.
        end = max(int(field.get("pos")) + int(field.get("size"))
                  for field in protocols[-1].iter("field") if field.get("name"))
        yield [proto.get("name") for proto in protocols], fields, int(fields["frame.len"][0]) - end


def value(text, like):
    """A value of tshark's in the form of what is expected."""
    if not isinstance(like, int):
        return text
    try:
        return int(text, 0)
    except (TypeError, ValueError):
        return text


def differences(protocols, fields, rest, expected):
    if rest != 0:
        yield f"{rest} bytes at the end mean nothing"
    top = "zbee_zdp" if "zbee_zdp.seqno" in expected else "zbee_zcl"
    if protocols[-1] != top:
        yield f"ends with {protocols[-1]} in place of {top}"
    for name, values in expected.items():
        found = [value(text, values[0]) for text in fields.get(name, [])]
        if found != values:
            yield f"{name} is {found} in place of {values}"
    for name, values in fields.items():
        is_payload = name.startswith(("zbee_zcl", "zbee_zdp", "_ws."))
        if is_payload and name not in expected and not name.startswith(DERIVED_FIELDS):
            yield f"{name} is {values}, which was not put in"


def uncovered(program):
    """Commands of the program that no case has, and names that are no commands of it."""
    commands = {" ".join(line.split()[:2]) for line in vso(program, "--list").splitlines()}
    named = {" ".join(words.split()[:2]) for words, _ in CASES} | set(NOT_IN_THE_STANDARD)
    return sorted(commands ^ named)


def main():
    program = sys.argv[1]
    tshark = shutil.which("tshark")
    if tshark is None:
        print("skipped: tshark is not installed")
        return SKIPPED

    failures = [f"{command}: in one of the program's list and this test's alone" for command in uncovered(program)]
    lines = [vso(program, f"{words} --sequence {SEQUENCE} --line") for words, _ in CASES]
    packets = list(dissect(tshark, capture(lines)))
    if len(packets) != len(CASES):
        failures.append(f"tshark shows {len(packets)} packets of {len(CASES)}")
    for (words, expected), line, packet_seen in zip(CASES, lines, packets):
        failures += [f"{words}\n  {line.strip()}\n  {what}" for what in differences(*packet_seen, expected)]

    for failure in failures:
        print(failure)
    print(f"{len(CASES)} frames, {len(failures)} differences; {len(NOT_IN_THE_STANDARD)} commands left out:")
    for command, reason in NOT_IN_THE_STANDARD.items():
        print(f"  {command}: {reason}")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
