// MD5, Base64 and DES-CBC throughput of libzradutils beside OpenSSL, case by case.
//
// Each case runs both sides on the same input in the same process and ends with the line
// "ratio <case>: zrad / openssl = T": our time over OpenSSL's, so below 1 means faster.
// Build with -DCMAKE_BUILD_TYPE=Release -DZRAD_BENCH=ON.
#include <zrad/crypto.h>

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "openssl_peer.h"
#include "common/peer_ratio.h"

namespace {

constexpr size_t kMiB = 1 << 20;

std::vector<unsigned char> inputBytes(size_t count) {
  std::vector<unsigned char> bytes(count + 1);  // + the readable byte Encode may look at
  uint32_t x = 0x12345678;
  for (auto& b : bytes) b = static_cast<unsigned char>((x = x * 1664525 + 1013904223) >> 24);
  bytes[count] = 0;
  return bytes;
}

void setBytes(benchmark::State& state, size_t bytes) {
  state.SetBytesProcessed(int64_t(state.iterations() * bytes));
}

void md5Ours(benchmark::State& state, size_t size) {
  const auto data = inputBytes(size);
  for (auto _ : state) benchmark::DoNotOptimize(MD5_32(data.data(), unsigned(size), false));
  setBytes(state, size);
}

void md5Peer(benchmark::State& state, size_t size) {
  const auto data = inputBytes(size);
  for (auto _ : state) benchmark::DoNotOptimize(peer::md5Hex(data.data(), size));
  setBytes(state, size);
}

const std::string kPass = "benchmark pass phrase";

// The key and IV our codec derives from kPass, handed to the peer.
void keyAndIv(unsigned char digest[16]) {
  MD5 context;
  MD5Open(&context);
  MD5Digest(&context, kPass.data(), unsigned(kPass.size()));
  MD5Close(&context, digest);
}

void desEncryptOurs(benchmark::State& state) {
  auto data = inputBytes(kMiB);
  std::string out;
  for (auto _ : state) {
    out.clear();
    DES_Encrypt(data.data(), int(kMiB), kPass, out);
    benchmark::DoNotOptimize(out.data());
  }
  setBytes(state, kMiB);
}

// The peer's raw CBC pass: `encrypt` false runs the same bytes through decryption.
void desPeer(benchmark::State& state, bool encrypt) {
  const auto data = inputBytes(kMiB);
  std::vector<unsigned char> out(kMiB);
  unsigned char digest[16];
  keyAndIv(digest);
  for (auto _ : state) {
    peer::desCbc(digest, digest + 8, data.data(), out.data(), kMiB, encrypt);
    benchmark::DoNotOptimize(out.data());
  }
  setBytes(state, kMiB);
}

void desDecryptOurs(benchmark::State& state) {
  auto data = inputBytes(kMiB);
  std::string sealed, out;
  DES_Encrypt(data.data(), int(kMiB), kPass, sealed);
  for (auto _ : state) {
    out.clear();
    DES_Decrypt(&sealed[0], int(sealed.size()), kPass, out);
    benchmark::DoNotOptimize(out.data());
  }
  setBytes(state, kMiB);
}

void base64EncodeOurs(benchmark::State& state) {
  const auto data = inputBytes(kMiB);
  for (auto _ : state) benchmark::DoNotOptimize(CBase64().Encode(data.data(), int(kMiB)));
  setBytes(state, kMiB);
}

void base64EncodePeer(benchmark::State& state) {
  const auto data = inputBytes(kMiB);
  for (auto _ : state) benchmark::DoNotOptimize(peer::base64Encode(data.data(), kMiB));
  setBytes(state, kMiB);
}

void base64DecodeOurs(benchmark::State& state) {
  const auto data = inputBytes(kMiB);
  const std::string text = CBase64().Encode(data.data(), int(kMiB));
  std::vector<unsigned char> out(text.size());
  for (auto _ : state) {
    unsigned length = unsigned(out.size());
    benchmark::DoNotOptimize(CBase64().Decode(text.c_str(), out.data(), length));
  }
  setBytes(state, text.size());
}

void base64DecodePeer(benchmark::State& state) {
  const auto data = inputBytes(kMiB);
  const std::string text = CBase64().Encode(data.data(), int(kMiB));
  std::vector<unsigned char> out(text.size());
  for (auto _ : state) benchmark::DoNotOptimize(peer::base64Decode(text.c_str(), text.size(), out.data()));
  setBytes(state, text.size());
}

}  // namespace

BENCHMARK_CAPTURE(md5Ours, 1MiB, kMiB)->Name("md5_1MiB/zrad");
BENCHMARK_CAPTURE(md5Peer, 1MiB, kMiB)->Name("md5_1MiB/openssl");
BENCHMARK_CAPTURE(md5Ours, 64B, size_t(64))->Name("md5_32_64B/zrad");
BENCHMARK_CAPTURE(md5Peer, 64B, size_t(64))->Name("md5_32_64B/openssl");
BENCHMARK(desEncryptOurs)->Name("des_cbc_encrypt_1MiB/zrad");
BENCHMARK_CAPTURE(desPeer, encrypt, true)->Name("des_cbc_encrypt_1MiB/openssl");
BENCHMARK(desDecryptOurs)->Name("des_cbc_decrypt_1MiB/zrad");
BENCHMARK_CAPTURE(desPeer, decrypt, false)->Name("des_cbc_decrypt_1MiB/openssl");
BENCHMARK(base64EncodeOurs)->Name("base64_encode_1MiB/zrad");
BENCHMARK(base64EncodePeer)->Name("base64_encode_1MiB/openssl");
BENCHMARK(base64DecodeOurs)->Name("base64_decode_1MiB/zrad");
BENCHMARK(base64DecodePeer)->Name("base64_decode_1MiB/openssl");

ZRAD_BENCHMARK_MAIN()
