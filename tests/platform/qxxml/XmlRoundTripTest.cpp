// What XmlWriter has written, XmlReader reads, whatever the bytes.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include <libxml/parser.h>
#include <libxml/tree.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "qxxml/XmlReader.h"
#include "qxxml/XmlWriter.h"

namespace qx {
namespace {

constexpr int AT_END = 3;

const std::string R = "\xEF\xBF\xBD";  // U+FFFD

/// Bytes, and the text that they are written as. No piece begins with a continuation of UTF-8, so that pieces in a row
/// make no other characters than their own.
struct Piece {
  std::string bytes;
  std::string text;
};

const Piece PIECES[] = {
    {"a", "a"},
    {" ", " "},
    {"\t", "\t"},
    {"\n", "\n"},
    {"\r", "\r"},
    {"<", "<"},
    {">", ">"},
    {"&", "&"},
    {"\"", "\""},
    {"'", "'"},
    {"]]>", "]]>"},
    {"&lt;", "&lt;"},
    {"<!--", "<!--"},
    {"-->", "-->"},
    {"<![CDATA[", "<![CDATA["},
    {"?>", "?>"},
    {"\x7F", "\x7F"},
    {"\xC2\x85", "\xC2\x85"},
    {"\xC3\xA9", "\xC3\xA9"},
    {"\xE2\x80\xA8", "\xE2\x80\xA8"},
    {"\xEF\xBB\xBF", "\xEF\xBB\xBF"},
    {"\xF4\x8F\xBF\xBF", "\xF4\x8F\xBF\xBF"},
    {std::string(1, '\0'), R},
    {"\x1F", R},
    {"a\x80", "a" + R},
    {"\xC3", R},
    {"\xE2\x82", R},
    {"\xF0\x9F\x98", R},
    {"\xED\xA0\x80", R + R + R},
    {"\xEF\xBF\xBF", R},
    {"\xFF", R},
};

Piece randomPiece(std::mt19937& random) {
  Piece all;
  for (std::size_t count = random() % 40; count > 0; --count) {
    const Piece& piece = PIECES[random() % std::size(PIECES)];
    all.bytes += piece.bytes;
    all.text += piece.text;
  }
  return all;
}

std::string randomBytes(std::mt19937& random) {
  std::string bytes(random() % 300, '\0');
  for (char& byte : bytes) byte = static_cast<char>(random());
  return bytes;
}

std::string written(const std::string& name, const std::string& value, bool indent = false) {
  std::ostringstream out;
  XmlWriter writer(out, indent);
  writer.startElement(name);
  writer.writeAttribute(name.c_str(), value.c_str());
  writer.writeElement(name, value);
  writer.endElement();
  return out.str();
}

/// The text of the only child in a document of `written`, of which all is read.
std::string textIn(const std::string& document) {
  XmlReader reader(document);
  reader.read();
  do {
    reader.read();
  } while (reader.nodeType() == 14);
  EXPECT_EQ(reader.nodeType(), 1) << document;
  reader.read();
  std::string text = reader.value();
  while (reader.read()) {
  }
  EXPECT_EQ(reader.state(), AT_END) << document;
  return text;
}

/// The value of the only attribute of the outermost element.
std::string attributeIn(const std::string& document) {
  const std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> tree(
      xmlReadMemory(document.data(), static_cast<int>(document.size()), nullptr, nullptr, XML_PARSE_NONET),
      &xmlFreeDoc);
  if (tree == nullptr) return "not well-formed: " + document;
  xmlNode* const root = xmlDocGetRootElement(tree.get());
  xmlChar* const value = xmlGetProp(root, root->properties->name);
  std::string text(reinterpret_cast<const char*>(value));
  xmlFree(value);
  return text;
}

TEST(XmlRoundTrip, KeepsTheTextOfAnyBytes) {
  std::mt19937 random(1);
  for (int i = 0; i < 5000; ++i) {
    const Piece piece = randomPiece(random);
    EXPECT_EQ(textIn(written("n", piece.bytes)), piece.text);
    EXPECT_EQ(textIn(written("n", piece.bytes, true)), piece.text);
  }
}

TEST(XmlRoundTrip, KeepsTheAttributeOfAnyBytes) {
  std::mt19937 random(2);
  for (int i = 0; i < 5000; ++i) {
    const Piece piece = randomPiece(random);
    // The value ends where a C string ends.
    const Piece& expected = piece.bytes.find('\0') == std::string::npos ? piece : PIECES[0];
    EXPECT_EQ(attributeIn(written("n", expected.bytes)), expected.text);
  }
}

TEST(XmlRoundTrip, TakesEverySingleByte) {
  for (int byte = 0; byte < 256; ++byte) {
    const std::string text(1, static_cast<char>(byte));
    const bool carried = byte == '\t' || byte == '\n' || byte == '\r' || (byte >= 0x20 && byte < 0x80);
    EXPECT_EQ(textIn(written("n", text)), carried ? text : R) << byte;
  }
}

TEST(XmlRoundTrip, TakesAnyBytesAsNameAndText) {
  std::mt19937 random(3);
  for (int i = 0; i < 2000; ++i) {
    const std::string name = randomBytes(random);
    const std::string text = textIn(written(name, randomBytes(random)));
    EXPECT_EQ(textIn(written(name, text)), text);
  }
}

TEST(XmlRoundTrip, KeepsLongTexts) {
  std::mt19937 random(4);
  Piece all;
  while (all.text.size() < 1'000'000) {
    const Piece piece = randomPiece(random);
    all.bytes += piece.bytes;
    all.text += piece.text;
  }
  std::ostringstream out;
  XmlWriter writer(out);
  writer.startElement("r");
  writer.writeElement("n", all.bytes);
  writer.endElement();
  EXPECT_TRUE(textIn(out.str()) == all.text);
}

/// What xmllint ends with when it reads all files of the folder: 0 if all are well-formed. None if it is not installed.
std::optional<int> xmllint(const std::filesystem::path& folder) {
  std::vector<std::string> arguments{"xmllint", "--noout"};
  for (const auto& file : std::filesystem::directory_iterator(folder)) arguments.push_back(file.path().string());
  std::vector<char*> pointers;
  pointers.reserve(arguments.size() + 1);
  for (std::string& argument : arguments) pointers.push_back(argument.data());
  pointers.push_back(nullptr);
  pid_t child = 0;
  int status = 0;
  if (posix_spawnp(&child, "xmllint", nullptr, nullptr, pointers.data(), environ) != 0) return std::nullopt;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(XmlRoundTrip, PassesXmllint) {
  std::string pattern = testing::TempDir() + "XmlRoundTripTest.XXXXXX";
  ASSERT_NE(mkdtemp(pattern.data()), nullptr);
  const std::filesystem::path folder = pattern;
  std::mt19937 random(5);
  for (int i = 0; i < 300; ++i) {
    std::ofstream(folder / (std::to_string(i) + ".xml"))
        << written(randomBytes(random), randomBytes(random), i % 2 == 0);
  }
  const std::optional<int> whole = xmllint(folder);
  std::ofstream(folder / "cut.xml") << "<n>";
  const std::optional<int> cut = xmllint(folder);
  std::filesystem::remove_all(folder);
  if (!whole) GTEST_SKIP() << "no xmllint here (package libxml2-utils)";
  EXPECT_EQ(whole, 0);
  EXPECT_NE(cut, 0) << "xmllint takes anything for well-formed";
}

}  // namespace
}  // namespace qx
