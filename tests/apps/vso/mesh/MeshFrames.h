// Frames of a small mesh, for tests of what a server makes of them.
#pragma once

#include <ctime>
#include <numeric>
#include <string>
#include <vector>

#include "apps/vso/mesh/MeshServer.h"
#include "apps/vso/mesh/RecordedFrame.h"
#include "support/Bytes.h"
#include "tests/vso/mesh/Records.h"

namespace qx::app::test_mesh {

constexpr std::time_t NOON = 1773489600;  // 14 March 2026, 12:00 UTC

struct Device {
  std::string euid;
  unsigned short address;

  Euid id() const { return test::euidOf(euid); }
};

inline const Device LAMP{"0017880100a00010", 0x1C02};
inline const Device SENSOR{"0017880100a00011", 0x2D11};
inline const Device COORDINATOR{"0017880100a00001", 0x0000};
inline const Device ACCESS_POINT{"0017880100a00002", 0x7A01};
inline const Device NOBODY{"00aa00bb00cc00dd", 0x0BAD};

inline RecordedFrame frameOf(std::time_t time, const Device& device, unsigned short profile, unsigned short cluster,
                             const std::string& hex) {
  RecordedFrame frame;
  frame.time = time;
  frame.source = device.id();
  frame.shortAddress = device.address;
  frame.profile = profile;
  frame.cluster = cluster;
  frame.bytes = test::bytesOf(hex);
  return frame;
}

/// Pieces of a frame, in hexadecimal digits, put together.
inline std::string joined(const std::vector<std::string>& pieces) {
  return std::accumulate(pieces.begin(), pieces.end(), std::string());
}

inline std::string byteText(unsigned int value) { return test::hex(test::bytes({static_cast<unsigned char>(value)})); }
inline std::string shortText(unsigned int value) { return byteText(value & 0xFF) + " " + byteText(value >> 8); }

/// The pieces of a router's announcement: the header, and a record in each of the others.
inline std::vector<std::string> announcementPieces(unsigned int bootCount) {
  return {
      "18 05 0a",                          // a general report
      "00 00 20 02",                       // device type: router
      "04 00 42 05 31 2e 32 2e 33",        // firmware version: 1.2.3
      "05 00 20 07",                       // reflash version
      "06 00 21" + shortText(bootCount),   // boot count
      "07 00 42 07 71 78 3a 6c 61 6d 70",  // product: qx:lamp
      "0b 00 21 2c 01",                    // poll interval of the access point: 300
      "0c 00 20 14",                       // channel: 20
      "0f 00 21 10 0e",                    // poll interval of the parent: 3600
      "12 00 41 04 7a 01 00 00",           // table of access points: 0x7A01, 0x0000
      "13 00 28 c4",                       // RSSI: -60 dBm
      "14 00 20 f0",                       // LQI: 240
      "15 00 28 50",                       // battery: 80
      "16 00 20 03",                       // bars: 3
  };
}

constexpr unsigned short ANNOUNCE_PROFILE = 0xC25F;
constexpr unsigned short PRIVATE_PROFILE = 0xC25D;
constexpr unsigned short HOME_PROFILE = 0x0104;
constexpr unsigned short NETWORK_LAYER = 0xFFFF;

inline RecordedFrame announcement(std::time_t time, const Device& device, unsigned int bootCount) {
  return frameOf(time, device, ANNOUNCE_PROFILE, 0x0001, joined(announcementPieces(bootCount)));
}

/// An announcement of the device type alone: 1 the coordinator, 2 a router, 3 an end device, 4 one that sleeps.
inline RecordedFrame announcementOfType(std::time_t time, const Device& device, unsigned int type) {
  return frameOf(time, device, ANNOUNCE_PROFILE, 0x0001, "18 05 0a 00 00 20" + byteText(type));
}

/// A row of a neighbour table: the device 0017880100a000NN at the short address 0x1aNN, with an LQI of NN.
inline std::string neighbourRow(unsigned int number) {
  const std::string digits = byteText(number);
  return "6f 5e 4d 3c 2b 0a 60 51" +          // extended PAN id
         (digits + "00 a0 00 01 88 17 00") +  // long address
         (digits + "1a") +                    // short address
         "25 02 01" +                         // a sibling router, its joining is unknown, depth 1
         digits;                              // LQI
}

/// A row of a routing table: to 0x1aNN by way of 0x1bNN, an active many-to-one route.
inline std::string routeRow(unsigned int number) { return byteText(number) + "1a 10" + byteText(number) + "1b"; }

/// A page of rows from `start` on.
inline std::string pageOf(unsigned int total, unsigned int start, const std::vector<std::string>& rows) {
  return "07 00" + byteText(total) + byteText(start) + byteText(static_cast<unsigned int>(rows.size())) + joined(rows);
}

inline RecordedFrame neighbourPage(std::time_t time, const Device& device, const std::string& hex) {
  return frameOf(time, device, 0x0000, 0x8031, hex);
}
inline RecordedFrame routePage(std::time_t time, const Device& device, const std::string& hex) {
  return frameOf(time, device, 0x0000, 0x8032, hex);
}

/// A report of the network layer: status, and the destination that was not reached.
inline RecordedFrame networkStatus(std::time_t time, const Device& device, unsigned int status,
                                   unsigned int destination) {
  return frameOf(time, device, NETWORK_LAYER, 0x0003, byteText(status) + shortText(destination));
}

/// "10:16 11:17": the last two digits of each neighbour's long address, and its LQI.
inline std::string textOf(const std::list<Hop>& hops) {
  std::string text;
  for (const Hop& hop : hops) {
    text += (text.empty() ? "" : " ") + hop.neighbor_lid_.toString().substr(14) + ":" + std::to_string(hop.lqi_);
  }
  return text;
}
inline std::string neighboursOf(const ZigbeeNode& node) {
  std::list<Hop> hops;
  node.getHopList(hops);
  return textOf(hops);
}
inline std::string neighboursOf(const Zap& zap) {
  std::list<Hop> hops;
  zap.getHopList(hops);
  return textOf(hops);
}

/// "6674>6930": destinations and next hops.
inline std::string textOf(const std::list<Route>& routes) {
  std::string text;
  for (const Route& route : routes) {
    text += (text.empty() ? "" : " ") + std::to_string(route.destination_) + ">" + std::to_string(route.next_hop_);
  }
  return text;
}
inline std::string routesOf(const ZigbeeNode& node) {
  std::list<Route> routes;
  node.getMtoRouteList(routes);
  return textOf(routes);
}
inline std::string routesOf(const Zap& zap) {
  std::list<Route> routes;
  zap.getRoutes(routes);
  return textOf(routes);
}

}  // namespace qx::app::test_mesh
