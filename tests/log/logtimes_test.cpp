// The load-time log: inactive until named, three-line file, final open state.
#include <zrad/log.h>

#include "logtest.h"

using LogTimes = TempDirTest;

TEST_F(LogTimes, InactiveUntilCreated) {
  zrLogTimes* times = zrLogTimes::getInstance();
  EXPECT_FALSE(times->isLogInfo());
  times->LogTime(zrLogTimes::kReadDwg, true);
  times->setOpenErrorStatus(static_cast<Zrad::ErrorStatus>(3));
  EXPECT_EQ(times->getOpenState(), -9999);
  zrLogTimes::destoryInstance();  // writes nothing: no file was named
}

TEST_F(LogTimes, PhasesAndFinalState) {
  std::string file = path("times.txt");
  zrLogTimes* times = zrLogTimes::getInstance();
  times->createFile(file.c_str());
  ASSERT_TRUE(exists(file));
  EXPECT_EQ(readFile(file), "");

  times->LogTime(zrLogTimes::kReadDwg, true);
  std::vector<std::string> got = lines(file);
  ASSERT_EQ(got.size(), 3u);
  EXPECT_EQ(got[0].compare(0, 12, "readdwgtime="), 0);
  EXPECT_EQ(got[0].find_first_not_of("0123456789", 12), std::string::npos);
  EXPECT_EQ(got[1], "showdwgtime=");
  EXPECT_EQ(got[2], "exitno=");

  times->LogTime(zrLogTimes::kReadDwg, false);  // freezes phase 1
  std::string frozen = lines(file)[0];
  times->LogTime(zrLogTimes::kShowDwg, true);
  EXPECT_EQ(lines(file)[0], frozen);

  const int states[][2] = {{2, -2}, {3, -3}, {211, -211}, {337, -337}, {430, -430}, {503, -503},
                           {5, -9999}, {0, -9999}};
  for (const auto& row : states) {
    times->setOpenErrorStatus(static_cast<Zrad::ErrorStatus>(row[0]));
    EXPECT_EQ(times->getOpenState(), row[1]) << "status " << row[0];
  }
  times->setOpenErrorStatus(static_cast<Zrad::ErrorStatus>(5));
  zrLogTimes::destoryInstance();
  EXPECT_EQ(lines(file)[2], "exitno=-9999");
  EXPECT_FALSE(zrLogTimes::getInstance()->isLogInfo());  // a fresh instance
  zrLogTimes::destoryInstance();
}
