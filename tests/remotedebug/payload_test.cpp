// Payload strings on the wire, and the path rules of the remote commands.
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "remotedebug/netcommand_paths.h"
#include "remotedebug/payload.h"

using zrad::remote::freeFileName;
using zrad::remote::joinToCurrentDir;
using zrad::remote::readPayloadString;
using zrad::remote::writePayloadString;

namespace {

ZrMemoryStreamPtr streamOf(const std::string& bytes) {
  ZrMemoryStreamPtr stream = ZrMemoryStream::createNew();
  stream->putBytes(bytes.data(), static_cast<uint32_t>(bytes.size()));
  stream->rewind();
  return stream;
}

std::string bytesOf(ZrMemoryStream& stream) {
  return std::string(reinterpret_cast<const char*>(stream.data()), stream.length());
}

}  // namespace

TEST(PayloadString, EncodesLowSixteenBitsAfterACount) {
  const struct { const wchar_t* text; std::string wire; const wchar_t* readBack; } rows[] = {
      {L"", std::string("\0\0\0\0", 4), L""},
      {L"A", std::string("\1\0\0\0A\0", 6), L"A"},
      {L"验证", std::string("\2\0\0\0\x8c\x9a\xc1\x8b", 8), L"验证"},
      {L"\U0001F600x", std::string("\2\0\0\0\0\xf6x\0", 8), L"\xF600x"},
  };
  for (size_t i = 0; i < std::size(rows); ++i) {
    ZrMemoryStreamPtr out = ZrMemoryStream::createNew();
    writePayloadString(*out, rows[i].text);
    EXPECT_EQ(bytesOf(*out), rows[i].wire) << "row " << i;
    ZrString back = L"unchanged";
    ZrMemoryStreamPtr in = streamOf(rows[i].wire);
    EXPECT_TRUE(readPayloadString(*in, back)) << "row " << i;
    EXPECT_EQ(back, ZrString(rows[i].readBack)) << "row " << i;
    EXPECT_TRUE(in->isEof()) << "row " << i;
  }
}

TEST(PayloadString, ShortOrLyingInputIsRefused) {
  const std::string rows[] = {
      std::string(),
      std::string("\1\0\0", 3),
      std::string("\2\0\0\0A\0", 6),           // two units announced, one there
      std::string("\xff\xff\xff\xff", 4),      // 4 Gi units announced
      std::string("\xff\xff\xff\x7f" "AB", 6),  // count * 2 beyond 32 bits
  };
  for (size_t i = 0; i < std::size(rows); ++i) {
    ZrString text = L"unchanged";
    ZrMemoryStreamPtr in = streamOf(rows[i]);
    EXPECT_FALSE(readPayloadString(*in, text)) << "row " << i;
    EXPECT_EQ(text, ZrString(L"unchanged")) << "row " << i;
  }
}

TEST(CommandPaths, JoinAndFreeNames) {
  const struct { const wchar_t *dir, *name, *joined; } joins[] = {
      {L"", L"tmp", L"/tmp"},
      {L"/srv", L"a", L"/srv/a"},
      {L"/srv/", L"a", L"/srv/a"},
      {L"/srv", L"", L"/srv/"},
  };
  for (size_t i = 0; i < std::size(joins); ++i)
    EXPECT_EQ(joinToCurrentDir(joins[i].dir, joins[i].name), ZrString(joins[i].joined)) << "row " << i;

  // name, how many candidates exist already => the name chosen
  const struct { const wchar_t* name; int taken; const wchar_t* chosen; } names[] = {
      {L"a.txt", 0, L"/d/a.txt"},
      {L"a.txt", 1, L"/d/a-副本.txt"},
      {L"a.txt", 2, L"/d/a-副本-副本.txt"},
      {L"a.tar.gz", 1, L"/d/a-副本.tar.gz"},
      {L"README", 1, L"/d/README-副本"},
      {L".rc", 1, L"/d/-副本.rc"},
  };
  for (size_t i = 0; i < std::size(names); ++i) {
    std::set<std::wstring> asked;
    const ZrString chosen = freeFileName(L"/d", names[i].name, [&](const ZrString& path) {
      asked.insert(path.str());
      return static_cast<int>(asked.size()) <= names[i].taken;
    });
    EXPECT_EQ(chosen, ZrString(names[i].chosen)) << "row " << i;
  }
}
