// Running test code on a thread with a small stack, where deep recursion would overflow.
#pragma once

#include <pthread.h>

#include <functional>

#include <gtest/gtest.h>

namespace zradtest {

// Runs `body` on a thread whose stack is 1 MiB.
inline void onSmallStack(std::function<void()> body) {
  pthread_attr_t attr;
  pthread_attr_init(&attr);
  pthread_attr_setstacksize(&attr, 1 << 20);
  pthread_t thread;
  auto run = [](void* f) -> void* {
    (*static_cast<std::function<void()>*>(f))();
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, &attr, run, &body), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attr);
}

}  // namespace zradtest
