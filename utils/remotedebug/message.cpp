// Writing and reading the message header, field by field in host byte order.
#include "remotedebug/message.h"

namespace zrad::remote {

namespace {

constexpr int kSequenceOffset = 20;

template <class T>
void put(ZrStreamBuf& stream, T value) {
  stream.putBytes(&value, sizeof value);
}

template <class T>
T get(ZrStreamBuf& stream) {
  T value{};
  stream.getBytes(&value, sizeof value);
  return value;
}

}  // namespace

ZrSmartPtr<RvNetPackage> makeMessage(const RvMessageHeader& header) {
  ZrSmartPtr<ZrStreamBuf> stream = ZrMemoryStream::createNew(2048);
  put(*stream, header.reqId);
  put(*stream, header.senderTag);
  put(*stream, header.receiverTag);
  put(*stream, header.sequence);
  return RvNetPackage::createObject(stream);
}

RvMessageHeader readHeader(const RvNetPackage& pkg) {
  RvMessageHeader header{};
  ZrSmartPtr<ZrStreamBuf> stream = pkg.stream();
  if (!stream) return header;
  stream->seek(0, kSeekFromStart);
  header.reqId = get<int32_t>(*stream);
  header.senderTag = get<uint64_t>(*stream);
  header.receiverTag = get<uint64_t>(*stream);
  header.sequence = get<int32_t>(*stream);
  return header;
}

void setSequence(RvNetPackage& pkg, int32_t sequence) {
  ZrSmartPtr<ZrStreamBuf> stream = pkg.stream();
  if (!stream) return;
  stream->seek(kSequenceOffset, kSeekFromStart);
  put(*stream, sequence);
}

}  // namespace zrad::remote
