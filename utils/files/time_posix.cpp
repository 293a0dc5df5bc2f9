// Wall clock, sleeping and thread identity from the operating system.
//
// Thin wrappers over gettimeofday, nanosleep and pthread_self.
#include <errno.h>
#include <pthread.h>
#include <sys/time.h>
#include <time.h>

#include <zrad/text.h>

uint64_t zrutGetcurrentTime() {
  timeval now{};
  gettimeofday(&now, nullptr);
  return static_cast<uint64_t>(now.tv_sec) * 1000000u + static_cast<uint64_t>(now.tv_usec);
}

uint64_t zrutGetTickCount() { return zrutGetcurrentTime() / 1000u; }

void zrutSleep(unsigned int milliseconds) {
  // nanosleep rather than usleep: usleep may refuse a second or more, and signals cut it short.
  timespec left{static_cast<time_t>(milliseconds / 1000u), static_cast<long>(milliseconds % 1000u) * 1000000L};
  while (nanosleep(&left, &left) != 0 && errno == EINTR) {
  }
}

uint64_t zrutCurrentThreadId() { return static_cast<uint64_t>(pthread_self()); }
