// Test conversations shared by the endpoint and service tests.
#include "remotedebug/remote_testing.h"

#include <filesystem>

#include "common/testdir.h"

namespace remotetest {

namespace {

std::string textAfterHeader(const RvNetPackage& pkg) {
  std::string payload = payloadOf(pkg);
  return payload.size() > 24 ? payload.substr(24) : "";
}

class EchoCom : public ZradNetComImp<INetCom> {
 public:
  int getReqId() const override { return m_reqId; }
  bool OnReceiveData(int reqId, ZrSmartPtr<RvNetPackage> received,
                     ZrSmartPtr<RvNetPackage> reply) override {
    m_reqId = reqId;
    appendText(*reply, "echo:" + textAfterHeader(*received));
    if (received->fileCount() > 0) reply->putFile(received->getFilePath(1), false);
    return true;
  }

 private:
  int m_reqId = 0;
};

}  // namespace

int openDescriptors() {
  return static_cast<int>(std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                                        std::filesystem::directory_iterator()));
}

ZrSmartPtr<TestCom> TestCom::create(int reqId, const std::string& text, int answers,
                                    const std::string& file) {
  ZrSmartPtr<TestCom> com = ZrRxObjectImpl<TestCom>::createObject();
  com->m_reqId = reqId;
  com->m_text = text;
  com->m_answersWanted = answers;
  com->m_file = file;
  return com;
}

bool TestCom::OnReceiveData(int reqId, ZrSmartPtr<RvNetPackage> received,
                            ZrSmartPtr<RvNetPackage> reply) {
  if (reqId == 0) {
    appendText(*reply, m_text);
    if (!m_file.empty()) reply->putFile(m_file.c_str(), false);
    return true;
  }
  std::lock_guard<std::mutex> lock(m_lock);
  m_answers.push_back(textAfterHeader(*received));
  if (received->fileCount() > 0) m_fileReceived = readFile(received->getFilePath(1).c_str());
  const bool more = static_cast<int>(m_answers.size()) < m_answersWanted;
  if (!more) appendText(*reply, "bye");
  return more;
}

std::vector<std::string> TestCom::answers() const {
  std::lock_guard<std::mutex> lock(m_lock);
  return m_answers;
}

std::string TestCom::fileReceived() const {
  std::lock_guard<std::mutex> lock(m_lock);
  return m_fileReceived;
}

ZrSmartPtr<INetCom> createEchoMonitor(int) { return ZrRxObjectImpl<EchoCom>::createObject(); }

}  // namespace remotetest
