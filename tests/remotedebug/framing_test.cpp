#include <gtest/gtest.h>

#include <zrad/remotedebug.h>

TEST(Framing, Placeholder) {}
