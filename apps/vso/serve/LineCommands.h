// What a client of the server may say, and what it is answered.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "apps/vso/mesh/MeshServer.h"

namespace qx::app {

/// Answers the lines of the server's protocol. An answer is one of
///
///   ok                      done
///   ok TEXT                 what was asked for
///   block N                 the same, in the N lines behind it
///   error TEXT              nothing was done
///
/// and every line of it ends with "\r\n". No line makes this throw.
class LineCommands {
 public:
  /// `save` saves the mesh, and throws std::runtime_error if it cannot.
  LineCommands(MeshServer& mesh, std::function<void()> save);

  /// Answers one line, with or without its end.
  std::string answer(const std::string& line);

  /// How the commands are used, two lines each: for help texts.
  static std::string usage();

 private:
  using Words = std::vector<std::string>;
  struct Command;

  static const std::vector<Command>& commands();

  std::string help(const Words& words);
  std::string frame(const Words& words);
  std::string nodes(const Words& words);
  std::string node(const Words& words);
  std::string health(const Words& words);
  std::string reset(const Words& words);
  std::string label(const Words& words);
  std::string build(const Words& words);
  std::string save(const Words& words);

  ZigbeeNode& nodeOf(const std::string& word);

  MeshServer& mesh_;
  std::function<void()> save_;
};

}  // namespace qx::app
