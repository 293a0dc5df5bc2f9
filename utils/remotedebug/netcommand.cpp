// The remote command set: how a command conversation opens, is served and is answered, and
// the service-side handlers.
#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>

#include <zrad/files.h>
#include <zrad/json.h>
#include <zrad/remotedebug.h>

#include "log/logmsg.h"
#include "remotedebug/guard.h"
#include "remotedebug/netcommand_list.h"
#include "remotedebug/netcommand_paths.h"
#include "remotedebug/netcommand_table.h"
#include "remotedebug/payload.h"

using zrad::remote::connectionGuard;
using zrad::remote::findCommand;
using zrad::remote::HeldPath;
using zrad::remote::joinToCurrentDir;
using zrad::remote::kMissingFile;
using zrad::remote::readPayloadString;
using zrad::remote::writePayloadString;

ZR_RX_DEFINE_MEMBERS(CNetCommand, INetCom, L"CNetCommand")

int CNetCommand::iReqId = 1;

namespace {

const char kLogSource[] = "utils/netcommand";

ZrUtf8String utf8(const ZrString& text) { return ZrUtf8String(text); }

ZrString& currentDir() {
  static ZrString dir;
  return dir;
}

// Appends one answer string to a package's payload.
void answer(const ZrSmartPtr<RvNetPackage>& reply, const ZrString& text) {
  ZrSmartPtr<ZrStreamBuf> stream = reply->stream();
  if (stream.isNull()) return;
  stream->seek(0, kSeekFromEnd);
  writePayloadString(*stream, text);
}

void answerIf(const ZrSmartPtr<RvNetPackage>& reply, bool ok, const wchar_t* yes, const wchar_t* no) {
  answer(reply, ok ? yes : no);
}

// Files travel with 32-bit sizes and are read as streams: only regular files below 2 GiB can go.
bool isTransferable(const ZrUtf8String& path) {
  struct stat info {};
  return stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode) && info.st_size < (int64_t{1} << 31);
}

// The restricted file operations of the connection served on this thread; null without a root.
const zrad::remote::RootedFiles* rootedFiles() {
  const zrad::remote::ConnectionGuard* guard = connectionGuard();
  return guard ? guard->rootedFiles() : nullptr;
}

// Runs `list` (LS, FIND) on `dir` itself, or beneath a root on the path of its descriptor;
// "" when the root refuses it (an empty directory would list the process's own).
template <class List>
ZrUtf8String listingOf(const ZrString& dir, List list) {
  const zrad::remote::RootedFiles* rooted = rootedFiles();
  if (!rooted) return list(utf8(dir));
  HeldPath held = rooted->open(utf8(dir), O_RDONLY | O_DIRECTORY);
  return held ? list(held.path()) : ZrUtf8String();
}

// Copies a received file into `dir` under a free name made from `name`; "" when the copy fails.
ZrString storeReceivedFile(const ZrUtf8String& received, const ZrString& dir, const ZrString& name) {
  if (const zrad::remote::RootedFiles* rooted = rootedFiles())
    return rooted->store(received, dir, name);
  return zrad::remote::storeUnderFreeName(received, dir, name, zrad::remote::openParentDir);
}

}  // namespace

CNetCommand::CNetCommand(const ZrString& word, const ZrString& arg1, const ZrString& arg2,
                         NetCommandClientCallBack* callback)
    : m_word(word), m_arg1(arg1), m_arg2(arg2), m_callback(callback) {}

ZrSmartPtr<INetCom> CNetCommand::createNetCom(int) {
  return ZrRxObjectImpl<CNetCommand>::createObject(ZrString(), ZrString(), ZrString(), nullptr);
}

int CNetCommand::getReqId() const { return iReqId; }

void CNetCommand::setCurrentDir(const ZrString& dir) { currentDir() = dir; }
ZrString CNetCommand::GetCurd(int) { return currentDir(); }
void CNetCommand::openFile(const ZrString&) {}
void CNetCommand::closeFile(const ZrString&) {}

bool CNetCommand::OnReceiveData(int reqId, ZrSmartPtr<RvNetPackage> received,
                                ZrSmartPtr<RvNetPackage> reply) {
  if (reqId == 0) return openConversation(reply);
  if (m_opened) return showAnswer(received);

  zrad::remote::ConnectionGuard* guard = connectionGuard();
  if (guard) guard->beginMessage();
  ZrSmartPtr<ZrStreamBuf> in = received->stream();
  if (in.isNull() || in->length() < static_cast<uint64_t>(kRvMessageHeaderSize)) return false;
  in->seek(kRvMessageHeaderSize, kSeekFromStart);
  if (!readPayloadString(*in, m_word) || !readPayloadString(*in, m_arg1) ||
      !readPayloadString(*in, m_arg2))
    return false;
  const zrad::remote::Command* command = findCommand(m_word);
  if (!command) {
    ZRAD_LOG(5, kLogSource, "%s, this:%p, Unkown cmd:%s", "OnReceiveData",
             static_cast<void*>(this), utf8(m_word).c_str());
    return false;
  }
  if (guard && !guard->admits(m_word)) {
    answer(reply, L"请先验证！");
    return true;  // the client ends the conversation on the answer
  }
  // The file functions would see such a name cut short at its zero and act on another file.
  if (command->namesFiles && (m_arg1.find(L'\0') >= 0 || m_arg2.find(L'\0') >= 0)) {
    ZRAD_LOG(5, kLogSource, "%s refused: a file name holds a zero character", utf8(m_word).c_str());
    if (command->failed) answer(reply, command->failed);
    return true;
  }
  return (this->*command->handler)(reqId, received, reply);
}

bool CNetCommand::openConversation(ZrSmartPtr<RvNetPackage> request) {
  m_opened = true;
  m_word.makeUpper();
  if (!findCommand(m_word)) return false;
  if (m_word == L"UP" && (!isTransferable(utf8(m_arg1)) || request->putFile(utf8(m_arg1), false) < 0)) {
    deliver({kMissingFile}, ZrString());
    return false;
  }
  for (const ZrString* text : {&m_word, &m_arg1, &m_arg2}) answer(request, *text);
  return true;
}

bool CNetCommand::showAnswer(ZrSmartPtr<RvNetPackage> received) {
  std::vector<ZrString> texts;
  ZrSmartPtr<ZrStreamBuf> in = received->stream();
  if (!in.isNull() && in->length() >= static_cast<uint64_t>(kRvMessageHeaderSize)) {
    in->seek(kRvMessageHeaderSize, kSeekFromStart);
    for (ZrString text; readPayloadString(*in, text);) texts.push_back(text);
  }
  ZrString stored;
  if (m_word == L"DOWN" && received->fileCount() > 0) {
    stored = storeReceivedFile(received->getFilePath(1), GetCurd(0),
                               zrutGetLastFileNameInPathW(m_arg1));
    if (!stored.isEmpty()) texts.push_back(L"已下载到：" + stored);
  }
  deliver(texts, stored);
  return false;
}

void CNetCommand::deliver(const std::vector<ZrString>& texts, const ZrString& stored) {
  if (m_callback)
    for (const ZrString& text : texts) m_callback->showText(m_word, text);
  std::lock_guard<std::timed_mutex> lock(*getMutex());
  if (!m_out) return;
  for (size_t i = 0; i < texts.size(); ++i)
    m_out->SetDataS(ZrUtf8String::format("texts/%zu", i).c_str(), utf8(texts[i]));
  if (!stored.isEmpty()) m_out->SetDataS("path", utf8(stored));
}

// ---- Handlers (service side) ----

bool CNetCommand::cmdHello(int reqId, ZrSmartPtr<RvNetPackage>, ZrSmartPtr<RvNetPackage> reply) {
  if (reqId == 1) answer(reply, L"欢迎连接 本机");
  return true;
}

bool CNetCommand::cmdVer(int, ZrSmartPtr<RvNetPackage>, ZrSmartPtr<RvNetPackage>) { return true; }
bool CNetCommand::cmdCd(int, ZrSmartPtr<RvNetPackage>, ZrSmartPtr<RvNetPackage>) { return true; }
bool CNetCommand::cmdLa(int, ZrSmartPtr<RvNetPackage>, ZrSmartPtr<RvNetPackage>) { return true; }
bool CNetCommand::cmdAi(int, ZrSmartPtr<RvNetPackage>, ZrSmartPtr<RvNetPackage>) { return true; }
bool CNetCommand::cmdDebug(int, ZrSmartPtr<RvNetPackage>, ZrSmartPtr<RvNetPackage>) { return true; }

bool CNetCommand::cmdAf(int reqId, ZrSmartPtr<RvNetPackage>, ZrSmartPtr<RvNetPackage> reply) {
  if (reqId == 1) answer(reply, ZrString());  // no open files are tracked here
  return true;
}

bool CNetCommand::cmdLc(int reqId, ZrSmartPtr<RvNetPackage>, ZrSmartPtr<RvNetPackage> reply) {
  if (reqId == 1) answer(reply, L"不支持");
  return true;
}

bool CNetCommand::cmdCheckPass(int reqId, ZrSmartPtr<RvNetPackage>,
                               ZrSmartPtr<RvNetPackage> reply) {
  if (reqId != 1) return true;
  // Without a verifier every pass phrase is accepted.
  zrad::remote::ConnectionGuard* guard = connectionGuard();
  answerIf(reply, !guard || guard->checkPass(utf8(m_arg1)), L"验证成功！", L"验证失败！");
  return true;
}

bool CNetCommand::cmdO(int reqId, ZrSmartPtr<RvNetPackage>, ZrSmartPtr<RvNetPackage>) {
  if (reqId == 1) openFile(m_arg1);
  return true;
}

bool CNetCommand::cmdCf(int reqId, ZrSmartPtr<RvNetPackage>, ZrSmartPtr<RvNetPackage>) {
  if (reqId == 1) closeFile(m_arg1);
  return true;
}

bool CNetCommand::cmdLs(int reqId, ZrSmartPtr<RvNetPackage>, ZrSmartPtr<RvNetPackage> reply) {
  if (reqId != 1) return true;
  answer(reply, ZrString(listingOf(GetCurd(0), [this](const ZrUtf8String& dir) {
           return zrad::remote::listDirectory(dir, utf8(m_arg1), utf8(m_arg2));
         })));
  return true;
}

bool CNetCommand::cmdFind(int reqId, ZrSmartPtr<RvNetPackage>, ZrSmartPtr<RvNetPackage> reply) {
  if (reqId != 1) return true;
  answer(reply, ZrString(listingOf(GetCurd(0), [this](const ZrUtf8String& dir) {
           return zrad::remote::findFiles(dir, utf8(m_arg1));
         })));
  return true;
}

bool CNetCommand::cmdMd(int reqId, ZrSmartPtr<RvNetPackage>, ZrSmartPtr<RvNetPackage> reply) {
  if (reqId != 1) return true;
  const ZrUtf8String path = utf8(joinToCurrentDir(GetCurd(0), m_arg1));
  const zrad::remote::RootedFiles* rooted = rootedFiles();
  const bool made = rooted ? rooted->makeDir(path) : mkdir(path.c_str(), 0777) == 0;
  answerIf(reply, made, L"新建成功！", L"新建失败！");
  return true;
}

bool CNetCommand::cmdR(int reqId, ZrSmartPtr<RvNetPackage>, ZrSmartPtr<RvNetPackage> reply) {
  if (reqId != 1) return true;
  // An empty name would name the current directory itself ("/" when it is empty).
  const ZrUtf8String path = utf8(GetCurd(0) + L"/" + m_arg1);
  const zrad::remote::RootedFiles* rooted = rootedFiles();
  const bool removed = !m_arg1.isEmpty() && (rooted ? rooted->remove(path) : zrutRemoveFile(path));
  answerIf(reply, removed, L"删除成功！", L"删除失败！");
  return true;
}

bool CNetCommand::cmdRn(int reqId, ZrSmartPtr<RvNetPackage>, ZrSmartPtr<RvNetPackage> reply) {
  if (reqId != 1) return true;
  const ZrUtf8String from = utf8(joinToCurrentDir(GetCurd(0), m_arg1));
  const ZrUtf8String to = utf8(joinToCurrentDir(GetCurd(0), m_arg2));
  const zrad::remote::RootedFiles* rooted = rootedFiles();
  if (!(rooted ? rooted->exists(from) : zrutIsExistFile(from)))
    answer(reply, kMissingFile);
  else if (rooted ? rooted->rename(from, to) : rename(from.c_str(), to.c_str()) == 0)
    answer(reply, L"修改成功！");  // a failed rename answers nothing
  return true;
}

bool CNetCommand::cmdCp(int reqId, ZrSmartPtr<RvNetPackage>, ZrSmartPtr<RvNetPackage> reply) {
  if (reqId != 1) return true;
  const ZrString dir = GetCurd(0);
  const ZrUtf8String from = utf8(joinToCurrentDir(dir, zrutGetLastFileNameInPathW(m_arg1)));
  const ZrUtf8String to = utf8(joinToCurrentDir(dir, zrutGetLastFileNameInPathW(m_arg2)));
  const zrad::remote::RootedFiles* rooted = rootedFiles();
  const bool copied = rooted ? rooted->copy(from, to) : zrutCopyFile(from, to);
  answerIf(reply, copied, L"复制成功！", L"复制失败！");
  return true;
}

bool CNetCommand::cmdUp(int reqId, ZrSmartPtr<RvNetPackage> received,
                        ZrSmartPtr<RvNetPackage> reply) {
  if (reqId != 1) return true;
  const bool stored =
      received->fileCount() > 0 &&
      !storeReceivedFile(received->getFilePath(1), GetCurd(0), zrutGetLastFileNameInPathW(m_arg1))
           .isEmpty();
  answerIf(reply, stored, L"上传成功！", L"上传失败！");
  return true;
}

bool CNetCommand::cmdDown(int reqId, ZrSmartPtr<RvNetPackage>, ZrSmartPtr<RvNetPackage> reply) {
  if (reqId != 1) return true;
  ZrUtf8String path = utf8(joinToCurrentDir(GetCurd(0), m_arg1));
  zrad::remote::ConnectionGuard* guard = connectionGuard();
  HeldPath held;
  if (guard && guard->rootedFiles()) {
    // Sent through its descriptor, so the file cannot be swapped before it goes out.
    held = guard->rootedFiles()->open(path, O_RDONLY | O_NONBLOCK);
    path = held.path();
  }
  struct stat info {};
  if (guard && stat(path.c_str(), &info) == 0 && !guard->admitsFile(info.st_size))
    answer(reply, L"文件太大！");
  else if (!isTransferable(path) || reply->putFile(path, false) < 0)
    answer(reply, kMissingFile);
  if (held) guard->holdUntilNextMessage(std::move(held));
  return true;
}
