// The remote-debugging service on 127.0.0.1: a 256 MiB file moved down and up through the
// service beside nc moving the same file into a file, the round trip of a one-message
// conversation (p50 / p99), the CPU a service with 32 idle clients uses over 10 s, and HELLO
// answered while peers connect and hang up 200 times a second for 30 s (p50 / p99).
//
// The transfers use conversations of this program shaped like DOWN and UP (request, file in the
// answer or in the request, file stored under its final name), so the figures are those of the
// framing and the socket threads.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include <zrad/files.h>
#include <zrad/json.h>
#include <zrad/remotedebug.h>

#include "common/peer_ratio.h"

namespace {

constexpr int kDownReq = 21, kUpReq = 22, kPingReq = 23;
constexpr size_t kFileSize = size_t{256} << 20;

std::string textAfterHeader(const RvNetPackage& pkg) {
  ZrSmartPtr<ZrStreamBuf> stream = pkg.stream();
  if (!stream || stream->length() <= 24) return "";
  std::string text(stream->length() - 24, '\0');
  stream->seek(24, kSeekFromStart);
  stream->getBytes(&text[0], static_cast<uint32_t>(text.size()));
  return text;
}

void appendText(RvNetPackage& pkg, const std::string& text) {
  pkg.stream()->seek(0, kSeekFromEnd);
  pkg.stream()->putBytes(text.data(), static_cast<uint32_t>(text.size()));
}

// Stores the first file of `pkg` under `target` (a rename: the bytes are already on disk).
void storeFile(const RvNetPackage& pkg, const std::string& target) {
  if (pkg.fileCount() > 0) std::rename(pkg.getFilePath(1).c_str(), target.c_str());
}

// Service side: DOWN attaches the named file, UP stores the received one under the name given,
// PING answers at once.
class ServiceCom : public ZradNetComImp<INetCom> {
 public:
  int getReqId() const override { return 0; }
  bool OnReceiveData(int reqId, ZrSmartPtr<RvNetPackage> received,
                     ZrSmartPtr<RvNetPackage> reply) override {
    if (reqId == kDownReq) reply->putFile(textAfterHeader(*received).c_str(), false);
    if (reqId == kUpReq) storeFile(*received, textAfterHeader(*received));
    return true;
  }
};

ZrSmartPtr<INetCom> createServiceCom(int) { return ZrRxObjectImpl<ServiceCom>::createObject(); }

// Client side: opens with `text` (UP attaches `upload`), stores a received file under `target`.
class ClientCom : public ZradNetComImp<INetCom> {
 public:
  int reqId = 0;
  std::string text, upload, target;
  int getReqId() const override { return reqId; }
  bool OnReceiveData(int id, ZrSmartPtr<RvNetPackage> received,
                     ZrSmartPtr<RvNetPackage> reply) override {
    if (id == 0) {
      appendText(*reply, text);
      if (!upload.empty()) reply->putFile(upload.c_str(), false);
      return true;
    }
    if (!target.empty()) storeFile(*received, target);
    return false;
  }
};

struct Setup {
  std::string dir;
  std::string file;
  ZrSmartPtr<RvRemoteDebugService> service;
  ZrSmartPtr<RvRemoteDebugClient> client;

  Setup() {
    char pattern[] = "/tmp/zradbench-XXXXXX";
    dir = mkdtemp(pattern);
    setTempPath((dir + "/tmp").c_str());
    file = dir + "/big.bin";
    std::vector<char> block(1 << 20);
    for (size_t i = 0; i < block.size(); ++i) block[i] = static_cast<char>(i * 131 + i / 977);
    FILE* out = std::fopen(file.c_str(), "wb");
    for (size_t done = 0; done < kFileSize; done += block.size()) std::fwrite(block.data(), 1, block.size(), out);
    std::fclose(out);
    service = RvRemoteDebugService::createObject(0);
    service->setBindAddress("127.0.0.1");
    for (int id : {kDownReq, kUpReq, kPingReq}) service->RegMonitor(id, createServiceCom);
    service->execute("bench service");
    client = connect();
  }
  ~Setup() {
    client->Disconect();
    service->Disconect();
    std::filesystem::remove_all(dir);
  }
  ZrSmartPtr<RvRemoteDebugClient> connect() {
    auto c = RvRemoteDebugClient::createObject("127.0.0.1", static_cast<int>(service->getPort()));
    c->execute("bench client");
    return c;
  }
  bool run(int reqId, const std::string& text, const std::string& upload, const std::string& target) {
    ZrSmartPtr<ClientCom> com = ZrRxObjectImpl<ClientCom>::createObject();
    com->reqId = reqId;
    com->text = text;
    com->upload = upload;
    com->target = target;
    return client->synCommunicate(com, 60000) && com->getStatus() == INetCom::kFinished;
  }
};

// MB/s over wall time: the bytes move on other threads and in other processes.
void reportThroughput(benchmark::State& state, std::chrono::steady_clock::time_point start) {
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  state.counters["MB_per_s"] = static_cast<double>(state.iterations() * kFileSize) / seconds / 1e6;
}

Setup& setup() {
  static Setup s;
  return s;
}

void BM_Transfer(benchmark::State& state, int reqId) {
  Setup& s = setup();
  const std::string target = s.dir + "/stored.bin";
  const auto start = std::chrono::steady_clock::now();
  for (auto _ : state) {
    bool ok = reqId == kDownReq ? s.run(kDownReq, s.file, "", target)
                                : s.run(kUpReq, target, s.file, "");
    if (!ok || std::filesystem::file_size(target) != kFileSize) state.SkipWithError("transfer failed");
    std::filesystem::remove(target);
  }
  reportThroughput(state, start);
}

unsigned freePort() {
  int s = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  bind(s, reinterpret_cast<sockaddr*>(&address), sizeof address);
  socklen_t length = sizeof address;
  getsockname(s, reinterpret_cast<sockaddr*>(&address), &length);
  close(s);
  return ntohs(address.sin_port);
}

// nc receiving into a file and nc sending the file, both on 127.0.0.1; the clock runs from the
// moment the listener is up until the file is stored.
void BM_Netcat(benchmark::State& state) {
  Setup& s = setup();
  const std::string target = s.dir + "/nc.bin";
  double seconds = 0;
  for (auto _ : state) {
    state.PauseTiming();
    const std::string port = std::to_string(freePort());
    pid_t listener = fork();
    if (listener == 0) {
      execl("/bin/sh", "sh", "-c", ("exec nc -l 127.0.0.1 " + port + " > " + target).c_str(), nullptr);
      _exit(127);
    }
    usleep(200000);
    state.ResumeTiming();
    const auto start = std::chrono::steady_clock::now();
    int sent = std::system(("nc -N 127.0.0.1 " + port + " < " + s.file).c_str());
    int status = 0;
    waitpid(listener, &status, 0);
    seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    if (sent != 0 || std::filesystem::file_size(target) != kFileSize) state.SkipWithError("nc failed");
    std::filesystem::remove(target);
  }
  state.counters["MB_per_s"] = static_cast<double>(state.iterations() * kFileSize) / seconds / 1e6;
}

// Microseconds of the sample at `fraction` (0.5: the median) of `micros`, which it sorts.
double percentile(std::vector<double>& micros, double fraction) {
  if (micros.empty()) return 0;
  std::sort(micros.begin(), micros.end());
  return micros[static_cast<size_t>(static_cast<double>(micros.size() - 1) * fraction)];
}

void BM_RoundTrip(benchmark::State& state) {
  Setup& s = setup();
  std::vector<double> micros;
  for (auto _ : state) {
    auto start = std::chrono::steady_clock::now();
    if (!s.run(kPingReq, "HELLO", "", "")) state.SkipWithError("round trip failed");
    micros.push_back(std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start).count());
  }
  state.counters["p50_us"] = percentile(micros, 0.5);
  state.counters["p99_us"] = percentile(micros, 0.99);
}

double cpuSeconds() {
  rusage usage;
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_utime.tv_sec + usage.ru_stime.tv_sec +
         (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

// CPU of the whole process (service, its 32 link threads and the 32 clients) over 10 s idle.
void BM_IdleClients(benchmark::State& state) {
  Setup& s = setup();
  for (auto _ : state) {
    std::vector<ZrSmartPtr<RvRemoteDebugClient>> clients;
    for (int i = 0; i < 32; ++i) clients.push_back(s.connect());
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    const double before = cpuSeconds();
    std::this_thread::sleep_for(std::chrono::seconds(10));
    state.counters["cpu_percent_of_core"] = (cpuSeconds() - before) / 10.0 * 100.0;
    for (auto& client : clients) client->Disconect();
  }
}

// HELLO through the command set, 100 a second for `seconds`, while (with `storm`) another
// thread connects to the service and hangs up every 5 ms: the microseconds of each answer.
std::vector<double> helloLatencies(RvRemoteDebugService& service, int seconds, bool storm,
                                   int& connects) {
  auto client = RvRemoteDebugClient::createObject("127.0.0.1", static_cast<int>(service.getPort()));
  client->execute("bench client");
  std::atomic<bool> stop{false};
  std::atomic<int> made{0};
  std::thread stormer([&] {
    auto next = std::chrono::steady_clock::now();
    for (int i = 0; storm && !stop && i < seconds * 200; ++i) {
      const int sock = socket(AF_INET, SOCK_STREAM, 0);
      sockaddr_in address{};
      address.sin_family = AF_INET;
      address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
      address.sin_port = htons(static_cast<uint16_t>(service.getPort()));
      made += connect(sock, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
      close(sock);
      std::this_thread::sleep_until(next += std::chrono::milliseconds(5));
    }
  });
  std::vector<double> micros;
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
  for (auto next = std::chrono::steady_clock::now(); next < end; std::this_thread::sleep_until(next)) {
    next += std::chrono::milliseconds(10);
    ZrJsonPtr in = ZrJson::readjson("{}"), out = ZrJson::readjson("{}");
    const auto start = std::chrono::steady_clock::now();
    const bool answered = CNetCommand::sendSynCommand(client.get(), "HELLO", 5000, in, out) &&
                          out("texts").ArrayCount() == 1 && out("texts")(0)->strValue().str() == "欢迎连接 本机";
    const auto took = std::chrono::steady_clock::now() - start;
    micros.push_back(answered ? std::chrono::duration<double, std::micro>(took).count() : 5e6);
  }
  stop = true;
  stormer.join();
  client->Disconect();
  connects = made;
  return micros;
}

// A failed HELLO counts as 5 s, so it shows in the p99.
void BM_HelloUnderConnects(benchmark::State& state) {
  ZrSmartPtr<RvRemoteDebugService> service = RvRemoteDebugService::createObject(0);
  service->setBindAddress("127.0.0.1");
  service->execute("bench service");
  for (auto _ : state) {
    int connects = 0;
    std::vector<double> quiet = helloLatencies(*service, 5, false, connects);
    std::vector<double> stormy = helloLatencies(*service, 30, true, connects);
    state.counters["quiet_p50_us"] = percentile(quiet, 0.5);
    state.counters["quiet_p99_us"] = percentile(quiet, 0.99);
    state.counters["p50_us"] = percentile(stormy, 0.5);
    state.counters["p99_us"] = percentile(stormy, 0.99);
    state.counters["connects_per_s"] = connects / 30.0;
  }
  service->Disconect();
}

}  // namespace

// Sides are named "<case>/zrad" and "<case>/nc" so that the ratio of times is printed; a time
// ratio of 1.10x is 0.91x of nc's throughput.
BENCHMARK_CAPTURE(BM_Transfer, down, kDownReq)->Name("down_256MiB/zrad")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Netcat)->Name("down_256MiB/nc")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Transfer, up, kUpReq)->Name("up_256MiB/zrad")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Netcat)->Name("up_256MiB/nc")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_RoundTrip)->Unit(benchmark::kMicrosecond)->Iterations(2000);
BENCHMARK(BM_IdleClients)->Unit(benchmark::kSecond)->Iterations(1);
BENCHMARK(BM_HelloUnderConnects)->Name("hello_under_200_connects_per_s")->Unit(benchmark::kSecond)->Iterations(1);

ZRAD_BENCHMARK_MAIN();
