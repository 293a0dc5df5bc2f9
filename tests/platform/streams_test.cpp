// Memory and file streams of the platform stand-in.
#include <gtest/gtest.h>

#include <string>

#include <zrplatform/platform.h>

#include "common/testdir.h"

namespace {

// The same sequence of calls against any stream: writes, seeks, reads past the end.
void exercise(ZrStreamBuf& s) {
  for (int i = 0; i < 1000; ++i) s.putByte(static_cast<uint8_t>(i));
  s.putBytes("tail", 4);
  EXPECT_EQ(s.length(), 1004u);
  EXPECT_EQ(s.seek(-4, kSeekFromEnd), 1000u);
  char buf[16] = {};
  EXPECT_EQ(s.getBytes(buf, sizeof buf), 4u);  // only what is there
  EXPECT_EQ(std::string(buf), "tail");
  EXPECT_TRUE(s.isEof());
  EXPECT_EQ(s.getByte(), 0);
  EXPECT_EQ(s.seek(-10, kSeekFromStart), 0u);
  EXPECT_EQ(s.seek(5000, kSeekFromStart), 1004u);
  s.seek(10, kSeekFromStart);
  EXPECT_EQ(s.getByte(), 10);
  EXPECT_EQ(s.seek(2, kSeekFromCurrent), 13u);
  s.truncate();
  EXPECT_EQ(s.length(), 13u);
  s.rewind();
  EXPECT_EQ(s.tell(), 0u);
}

}  // namespace

TEST(Streams, MemoryStream) {
  ZrMemoryStreamPtr m = ZrMemoryStream::createNew(0);
  exercise(*m);
  EXPECT_EQ(m->data()[12], 12);
  EXPECT_TRUE(m->isKindOf(ZrStreamBuf::desc()));
}

TEST(Streams, FileStreamsAndTheirFailures) {
  TestDir dir;
  ZrUtf8String path((dir / "s.bin").c_str());
  {
    ZrStreamBufPtr f = zrSystemServices()->createFile(path, kFileRead | kFileWrite, kShareDenyNo, kCreateNew);
    exercise(*f);
  }
  EXPECT_THROW(zrSystemServices()->createFile(path, kFileWrite, kShareDenyNo, kCreateNew), ZrError);
  EXPECT_THROW(zrSystemServices()->createFile(path + "x", kFileRead), ZrError);
  EXPECT_THROW(zrSystemServices()->createFile(ZrUtf8String(dir.path().c_str()), kFileRead), ZrError);
  ZrStreamBufPtr again = zrSystemServices()->createFile(ZrString(ZrString(path)), kFileRead);
  EXPECT_EQ(again->length(), 13u);
  EXPECT_TRUE(zrSystemServices()->accessFile(path, kFileRead));
}
