"""Reads what writeZap wrote, through code that protoc made of the installed schema. readZap.py MODULES FILE"""
import sys

sys.path.insert(0, sys.argv[1])

from vso.proto import HopPBuf_pb2, RoutePBuf_pb2, TriboolPEnum_pb2, ZapPBuf_pb2  # noqa: E402

zap = ZapPBuf_pb2.ZapPBuf()
with open(sys.argv[2], "rb") as file:
    zap.ParseFromString(file.read())

expected = {
    "ip": (zap.ip, 0xC0A80001),
    "port": (zap.port, 4321),
    "id": (zap.id.id, 0x7766554433221100),
    "xpanId": (zap.xpanId.addr.hex(), "8877665544332211"),
    "panId": (zap.panId, 0x1A2B),
    "channel": (zap.channel, 15),
    "radioTxPower": (zap.radioTxPower, -7),
    "configureAsCoordinator": (zap.configureAsCoordinator, True),
    "key": (zap.trustCurrentNetworkData.key.contents, bytes(16)),
    "hops": (len(zap.hops), 1),
    "hop": (zap.hops[0].neighbor, 0x2233),
    "rxOnWhenIdle": (zap.hops[0].rxOnWhenIdle, TriboolPEnum_pb2.TB_INDETERMINATE),
    "relationship": (zap.hops[0].relationship, HopPBuf_pb2.NONE_OF_THE_ABOVE),
    "routes": (len(zap.routes), 1),
    "route": (zap.routes[0].routeStatus, RoutePBuf_pb2.ROUTE_INACTIVE),
    "manyToOne": (zap.routes[0].manyToOne, True),
}
wrong = {name: pair for name, pair in expected.items() if pair[0] != pair[1]}
for name, (found, wanted) in wrong.items():
    print(f"{name}: {found!r}, expected {wanted!r}", file=sys.stderr)
sys.exit(1 if wrong else 0)
