// The mesh day through the engine, beside the decoding of the same frames; through a server and one connection; and the
// restoring of a mesh of 10,000 nodes, beside the parsing of its message. Figures are for one frame, or one node.
#include "apps/vso/mesh/MeshServer.h"

#include <benchmark/benchmark.h>
#include <log4cplus/loglevel.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <boost/asio/ip/address.hpp>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <list>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "apps/vso/mesh/MeshPBuf.pb.h"
#include "apps/vso/mesh/RecordedFrame.h"
#include "apps/vso/mesh/savedMesh.h"
#include "apps/vso/serve/Clients.h"
#include "apps/vso/serve/LineCommands.h"
#include "qxlogger/Logger.h"
#include "vso/connectors/QxnetServer.h"
#include "vso/mesh/AccessPoint.h"
#include "vso/zcl/QxZclAnnounce.h"
#include "vso/zcl/QxZclDiagnostics.h"
#include "vso/zcl/QxdiagnosticsNodeCounters.h"
#include "vso/zdo/ZdoNetworkLqiResponse.h"
#include "vso/zdo/ZdoNetworkRtgResponse.h"

namespace {

using qx::app::LineCommands;
using qx::app::MeshServer;
using qx::app::RecordedFrame;

struct Day {
  std::vector<std::string> lines;
  std::vector<RecordedFrame> frames;
};

const Day& meshDay() {
  static const Day day = [] {
    qx::Logger::initialize();
    qx::Logger::setLevel(log4cplus::FATAL_LOG_LEVEL);
    Day read;
    std::ifstream file(VSO_MESH_DAY);
    for (std::string line; std::getline(file, line);) {
      if (const auto frame = qx::app::parseRecordedFrame(line)) {
        read.lines.push_back(line);
        read.frames.push_back(*frame);
      }
    }
    if (read.frames.empty()) std::abort();
    return read;
  }();
  return day;
}

/// What the engine asks a frame, and nothing made of it.
void decode(const RecordedFrame& frame) {
  if (frame.profile == 0xC25F) {
    const qx::QxZclAnnounce announce(frame.bytes);
    benchmark::DoNotOptimize(announce.bootCount());
    benchmark::DoNotOptimize(announce.productString());
    benchmark::DoNotOptimize(announce.firmwareVersion());
    benchmark::DoNotOptimize(announce.reflashVersion());
    benchmark::DoNotOptimize(announce.deviceType());
    benchmark::DoNotOptimize(announce.channel());
    benchmark::DoNotOptimize(announce.nodeRssi());
    benchmark::DoNotOptimize(announce.nodeLqi());
    std::list<qx::AccessPoint> table;
    announce.apRouteTable(table);
    benchmark::DoNotOptimize(table);
  } else if (frame.cluster == qx::ZdoNetworkLqiResponse::COMMAND_ID) {
    std::list<qx::Hop> page;
    qx::ZdoNetworkLqiResponse(frame.bytes).hops(page);
    benchmark::DoNotOptimize(page);
  } else if (frame.cluster == qx::ZdoNetworkRtgResponse::COMMAND_ID) {
    std::list<qx::Route> page;
    qx::ZdoNetworkRtgResponse(frame.bytes).routes(page);
    benchmark::DoNotOptimize(page);
  } else if (frame.profile == 0xC25D) {
    const qx::QxZclDiagnostics diagnostics(frame.bytes);
    qx::QxdiagnosticsNodeCounters counters;
    unsigned int uptime = 0;
    benchmark::DoNotOptimize(diagnostics.parseReadAttributesResponse(counters));
    benchmark::DoNotOptimize(diagnostics.parseReadAttributesResponse(uptime));
  } else {
    const qx::ZclMessage message(frame.bytes);
    benchmark::DoNotOptimize(message.length_);
  }
}

void MeshDay_limit(benchmark::State& state) {
  const Day& day = meshDay();
  while (state.KeepRunningBatch(static_cast<benchmark::IterationCount>(day.frames.size()))) {
    for (const RecordedFrame& frame : day.frames) decode(frame);
  }
}
BENCHMARK(MeshDay_limit);

void MeshDay(benchmark::State& state) {
  const Day& day = meshDay();
  while (state.KeepRunningBatch(static_cast<benchmark::IterationCount>(day.frames.size()))) {
    MeshServer mesh(day.frames.front().time);
    for (const RecordedFrame& frame : day.frames) mesh.take(frame);
    benchmark::DoNotOptimize(mesh.nodes().size());
  }
}
BENCHMARK(MeshDay);

/// Sends the whole day in one go, and reads all its answers.
void ServedMeshDay(benchmark::State& state) {
  const Day& day = meshDay();
  std::string lines;
  for (const std::string& line : day.lines) lines += "frame " + line + "\r\n";
  MeshServer mesh(day.frames.front().time);
  LineCommands commands(mesh, [] {});
  qx::app::Clients clients(mesh.context(), commands);
  const auto server = clients.serverAt({boost::asio::ip::address_v4::loopback(), 0}, [](const qx::BErrorCode&) {});
  if (server->start()) std::abort();
  sockaddr_in place{};
  place.sin_family = AF_INET;
  place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  place.sin_port = htons(server->endpoint().port());
  std::thread thread([&mesh] { mesh.context().run(); });
  const int peer = ::socket(AF_INET, SOCK_STREAM, 0);
  if (::connect(peer, reinterpret_cast<const sockaddr*>(&place), sizeof place) != 0) std::abort();
  while (state.KeepRunningBatch(static_cast<benchmark::IterationCount>(day.lines.size()))) {
    std::thread sender([&] {
      for (std::size_t sent = 0; sent < lines.size();) {
        const ssize_t size = ::send(peer, lines.data() + sent, lines.size() - sent, MSG_NOSIGNAL);
        if (size <= 0) std::abort();
        sent += static_cast<std::size_t>(size);
      }
    });
    char bytes[65'536];
    for (std::size_t left = day.lines.size(); left > 0;) {
      const ssize_t size = ::recv(peer, bytes, sizeof bytes, 0);
      if (size <= 0) std::abort();
      for (ssize_t i = 0; i < size; ++i) left -= bytes[i] == '\n' ? 1 : 0;
    }
    sender.join();
  }
  ::close(peer);
  server->stop();
  thread.join();
}
BENCHMARK(ServedMeshDay)->UseRealTime();

constexpr std::size_t NODES = 10'000;

/// A mesh of so many nodes, each with the record of one of the day's.
const std::string& largeMesh() {
  static const std::string bytes = [] {
    MeshServer day(meshDay().frames.front().time);
    for (const RecordedFrame& frame : meshDay().frames) day.take(frame);
    MeshServer::Nodes nodes;
    qx::Euid euid;
    auto record = day.nodes().begin();
    while (nodes.size() < NODES) {
      euid++;
      qx::ZigbeeNode node = record->second;
      node.lid(euid);
      nodes.emplace(euid, node);
      if (++record == day.nodes().end()) record = day.nodes().begin();
    }
    return qx::app::bytesOfMesh(nodes, day.zaps());
  }();
  return bytes;
}

void RestoredNode_limit(benchmark::State& state) {
  const std::string& bytes = largeMesh();
  while (state.KeepRunningBatch(NODES)) {
    qx::app::pb::MeshFilePBuf file;
    qx::app::pb::MeshPBuf mesh;
    if (!file.ParseFromString(bytes) || !mesh.ParseFromString(file.mesh())) std::abort();
    benchmark::DoNotOptimize(mesh.nodes_size());
  }
}
BENCHMARK(RestoredNode_limit);

void RestoredNode(benchmark::State& state) {
  const std::string& bytes = largeMesh();
  while (state.KeepRunningBatch(NODES)) {
    MeshServer mesh(0);
    qx::app::SavedMesh saved = qx::app::meshOfBytes(bytes);
    mesh.restore(std::move(saved.nodes), std::move(saved.zaps));
    benchmark::DoNotOptimize(mesh.nodes().size());
  }
}
BENCHMARK(RestoredNode);

}  // namespace
