// zrad/remotedebug.h: the remote-debugging service: packages, endpoints, service and clients.
//
// A package (RvNetPackage) is one payload stream plus whole files. Packages travel over a TCP
// connection between two endpoints (RvRemoteDebugCommunication); each endpoint runs one socket
// thread that alone reads and writes its socket and drives conversations (INetCom): a caller
// queues a conversation, the socket thread sends its opening message, routes every answer to it
// by tag and sends its replies. The service accepts connections and gives each one an endpoint
// of its own (RvRemoteLinkClient); RvRemoteDebugClient is the connecting side.
//
// Wire format (all integers 32-bit host order unless noted):
//   frame:   [L payload length][N file count][L payload bytes]
//            [N x int32 file sizes, only when L != 0 and N != 0][file contents, in order]
//   payload: [int32 request id][uint64 sender tag][uint64 receiver tag, 0 = unknown]
//            [int32 sequence: 0 opening, received + 1 in answers, -1 ends][conversation data]
//
// By default the service has no authentication: every peer can read, write and delete the
// files of the user the service runs as, on every interface. A host that faces a network opts
// in to the protections of RvServiceProtections and to a bind address.
//
// Decisions taken here where the protocol leaves room:
// - Blocking waits are poll() with the caller's time-out. writedata/readdata give up with -2
//   ("expire") once the peer has been idle for the whole time-out, and at once when the peer has
//   closed the connection or it failed (the result an endless retry would reach anyway).
// - Transfers move blocks of 256 KiB rather than 1 KiB; the bytes on the wire are the same.
// - A received payload grows with the bytes that arrive, never with the length the header
//   claims; the same holds for the size table. A peer that claims 4 GiB and sends 100 MiB costs
//   about 100 MiB until its connection ends.
// - recvData removes the temporary files it already stored when it fails part-way; temporary
//   files are created exclusively, so concurrent receives never share one.
// - A received file that cannot be written (a full disk) is still read off the wire and then
//   left out of the package, so the connection stays in step and UP answers its failure instead
//   of storing a truncated file.
// - The socket thread sleeps in poll() on its socket and on a wake-up descriptor written by
//   communicate() and Disconect(), instead of polling every 300 us. Incoming messages are still
//   served before a queued conversation is opened, and the queue is still last-in first-out.
// - The service binds and listens in PrepareStart, so when execute() returns getPort() already
//   reads the port actually bound (0 when binding failed, and server() then returns 0).
// - The service prunes link clients whose thread has ended (on every pass of its loop), and when
//   it stops it disconnects every link client still running, so a stopped service leaves no
//   thread behind.
// - Mutexes and conditions are the standard library's (std::timed_mutex where a timed lock is
//   needed); getMutex() hands out that mutex.
// - A thread object holds a reference on itself while its thread runs; dropping the last outside
//   reference never leaves the thread with a dangling object.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <thread>
#include <vector>

#include <zrplatform/array.h>
#include <zrplatform/rxobject.h>
#include <zrplatform/stream.h>
#include <zrplatform/strings.h>

#include "export.h"

// ---------------------------------------------------------------------------------------------
// Packages.

// One payload stream and an ordered list of files (referred to by path; read when sent).
class ZRAD_EXPORT RvNetPackage : public ZrRxObject {
 public:
  ZR_RX_DECLARE_MEMBERS(RvNetPackage);

  // A new package holding a reference on `stream` (null: no payload), both lists empty.
  static ZrSmartPtr<RvNetPackage> createObject(ZrSmartPtr<ZrStreamBuf> stream);

  // Appends an existing file; with `removeWhenDone` the package deletes it when destroyed.
  // Returns the file's 1-based index, or -1 (nothing changed) when no file is at `path`.
  int putFile(const ZrUtf8String& path, bool removeWhenDone);
  // Path of the file at 1-based `index`; "" for index < 1 or above the file count.
  ZrUtf8String getFilePath(int index) const;
  int fileCount() const { return m_files.length(); }
  // The payload stream; may be null.
  ZrSmartPtr<ZrStreamBuf> stream() const { return m_stream; }

 protected:
  RvNetPackage() = default;
  // Removes every file of the removal list (failures ignored), then releases the payload.
  ~RvNetPackage() override;

 private:
  ZrSmartPtr<ZrStreamBuf> m_stream;
  ZrArray<ZrUtf8String> m_files{0, 8};
  ZrArray<ZrUtf8String> m_removeFiles{0, 8};
};

// ---------------------------------------------------------------------------------------------
// Conversations.

// The 24-byte header at the start of every payload an endpoint sends.
struct RvMessageHeader {
  int32_t reqId;         // selects the kind of conversation on the receiving side
  uint64_t senderTag;    // the sender's conversation
  uint64_t receiverTag;  // the receiver's conversation; 0 when not yet known
  int32_t sequence;      // 0 opening, received + 1 answering, -1 ending
};
constexpr int kRvMessageHeaderSize = 24;
constexpr int kRvSequenceEnd = -1;

// One request/response exchange; it may run over several messages in both directions.
class ZRAD_EXPORT INetCom : public ZrRxObject {
 public:
  ZR_RX_DECLARE_MEMBERS(INetCom);

  // Status values.
  enum { kNew = 0, kRunning = 1, kFinished = 2, kAborted = 3 };

  // The request id that selects the peer's handler.
  virtual int getReqId() const = 0;
  // Handles one message and writes the reply after the reply's header. The opening call gets
  // reqId 0 and the package to send as both `received` and `reply`. Returns true to go on,
  // false to end the conversation (the last reply still goes out, with sequence -1).
  virtual bool OnReceiveData(int reqId, ZrSmartPtr<RvNetPackage> received,
                             ZrSmartPtr<RvNetPackage> reply) = 0;
  // Waits for the next status signal (-1: without limit). No predicate: a signal given before
  // the wait began is not seen. Returns false on time-out.
  virtual bool waitSignal(int timeoutMs) = 0;
  virtual void finish() = 0;   // status 2, signalled
  virtual void abort() = 0;    // status 3, signalled
  // Sets the status; signals only for 2 and 3.
  virtual void setStatus(int status) = 0;
  virtual std::timed_mutex* getMutex() = 0;
  // The status as last set (0 new, 1 running, 2 finished, 3 aborted).
  virtual int getStatus() const = 0;
  // Waits until the status is 2 or 3 (-1: without limit); false on time-out. Unlike
  // waitSignal it sees an ending that came before the wait: synCommunicate waits with it.
  virtual bool waitEnded(int timeoutMs) = 0;
};

// Implements the status, its mutex and its condition for a conversation interface `Base`.
template <class Base>
class ZradNetComImp : public Base {
 public:
  bool waitSignal(int timeoutMs) override {
    if (timeoutMs == -1) {
      std::unique_lock<std::timed_mutex> lock(m_mutex);
      m_signal.wait(lock);
      return true;
    }
    const auto deadline = std::chrono::system_clock::now() + std::chrono::milliseconds(timeoutMs);
    std::unique_lock<std::timed_mutex> lock(m_mutex, deadline);
    if (!lock.owns_lock()) return false;
    return m_signal.wait_until(lock, deadline) == std::cv_status::no_timeout;
  }
  void finish() override { setStatus(INetCom::kFinished); }
  void abort() override { setStatus(INetCom::kAborted); }
  void setStatus(int status) override {
    std::lock_guard<std::timed_mutex> lock(m_mutex);
    m_status.store(status);
    if (status == INetCom::kFinished || status == INetCom::kAborted) m_signal.notify_all();
  }
  std::timed_mutex* getMutex() override { return &m_mutex; }
  int getStatus() const override { return m_status.load(); }
  bool waitEnded(int timeoutMs) override {
    std::unique_lock<std::timed_mutex> lock(m_mutex);
    auto ended = [this] { return m_status.load() >= INetCom::kFinished; };
    if (timeoutMs >= 0) return m_signal.wait_for(lock, std::chrono::milliseconds(timeoutMs), ended);
    m_signal.wait(lock, ended);
    return true;
  }

 private:
  std::atomic<int> m_status{INetCom::kNew};
  std::timed_mutex m_mutex;
  std::condition_variable_any m_signal;
};

// ---------------------------------------------------------------------------------------------
// Threads.

// A named thread with a start handshake and a three-step life: PrepareStart, Run, willStop.
class ZRAD_EXPORT RvDebugThread : public ZrRxObject {
 public:
  ZR_RX_DECLARE_MEMBERS(RvDebugThread);

  // Thread states; 4 counts as 3 wherever the state is tested.
  enum { kNotStarted = 0, kRunning = 1, kStopRequested = 2, kEnded = 3 };

  // Starts the thread; returns after the new thread has run PrepareStart. false (logged as
  // "execute 140 end") when no thread could be created, and when the object already has one.
  bool execute(const ZrUtf8String& name);
  // True on the object's own thread.
  bool isInCurThread() const;
  // Waits once on the event condition (no predicate).
  void waitEvent();
  void singalEventContinue();
  // Waits on the event condition for at most `ms` milliseconds.
  void waitTimeUntilEvent(int ms);
  int threadState() const { return m_state.load(); }
  const ZrUtf8String& threadName() const { return m_name; }

  virtual void PrepareStart() {}
  virtual void Run() {}
  virtual void willStop() {}

 protected:
  RvDebugThread() = default;
  // Joins the thread (detaches when the last reference is dropped on the thread itself).
  ~RvDebugThread() override;
  // Waits for the thread to end; nothing when it was never started or is the caller.
  void join();

  std::condition_variable m_event;
  mutable std::mutex m_mutex;  // also the endpoint's mutex
  std::thread m_thread;
  std::atomic<int> m_state{kNotStarted};
  ZrUtf8String m_name;

 private:
  static void threadBody(RvDebugThread* self, std::mutex* startMutex,
                         std::condition_variable* started, bool* ready);
};

// ---------------------------------------------------------------------------------------------
// Endpoints.

// One end of a connection: its socket, the queue of conversations waiting to be opened and the
// table of open ones, served by the socket thread.
class ZRAD_EXPORT RvRemoteDebugCommunication : public RvDebugThread {
 public:
  ZR_RX_DECLARE_MEMBERS(RvRemoteDebugCommunication);

  // Queues `com` to be opened by the socket thread; true.
  bool communicate(ZrSmartPtr<INetCom> com);
  // Queues `com` (status reset to 0) and waits until it has finished or been aborted.
  // timeoutMs >= 0: false when that takes longer. Negative: waits in 3 s steps while the
  // socket is set; false once the connection is gone (socket 0) with `com` still unended.
  bool synCommunicate(ZrSmartPtr<INetCom> com, int timeoutMs);
  // Asks a running socket thread to stop and waits until it has, then sets the socket to 0 and
  // joins the thread; an ended thread is only joined. Always true. Not from the own thread.
  bool Disconect();

  // Package framing: 0 on success (also when the frame header could not be written),
  // -1 when a file could not be examined or a transfer failed.
  static int sendData(int sock, ZrSmartPtr<RvNetPackage> pkg, int timeoutMs);
  // Reads one package into `pkg` (replaced only on success): 0, or -1 on a broken, expired or
  // malformed frame (negative file size, a temporary file that cannot be made). Received files
  // live under fresh temporary names that the package removes when destroyed.
  static int recvData(int sock, ZrSmartPtr<RvNetPackage>& pkg, int timeoutMs);

  // The conversation for a request id the peer opens; none here.
  virtual ZrSmartPtr<INetCom> createMonitor(unsigned int reqId) const;

  // The connected socket; 0 when there is none. Set it before execute().
  int getSocket() const { return m_socket.load(); }
  void setSocket(int sock) { m_socket.store(sock); }
  // Conversations queued and open (for observers and tests).
  int queuedCount() const;
  int openCount() const;

  void Run() override;
  void willStop() override;

 protected:
  RvRemoteDebugCommunication();
  ~RvRemoteDebugCommunication() override;

  // The socket thread: serves the socket until it breaks or a stop is requested.
  void socketThread();
  // Wakes the socket thread's poll (and the service's accept loop); drainWake() takes the
  // wake-ups given so far.
  void wake();
  void drainWake();
  int m_wakeFd = -1;

 private:
  int openQueued(int sock);      // -1 connection broken or stop, 0 queue empty, 1 more queued
  bool serveIncoming(int sock);  // false: connection broken
  void forget(const ZrSmartPtr<INetCom>& com);
  void abortAll();

  std::atomic<int> m_socket{0};
  ZrArray<ZrSmartPtr<INetCom>> m_queue{0, 8};
  std::map<uint64_t, ZrSmartPtr<INetCom>> m_open;
  std::condition_variable m_queued;
  std::condition_variable m_stopped;
  bool m_stopAcknowledged = false;
};

class RvRemoteLinkClient;

// Opt-in protections of a service. Every default leaves its protection off, and a service with
// all of them off behaves exactly as described for RvRemoteDebugService.
struct RvServiceProtections {
  // MD5 of the pass phrase as 32 hexadecimal digits (any case); see passVerifierOf(). With one,
  // CHECKPASS compares the MD5 of its phrase with it in constant time: a match answers
  // "验证成功！" and lets the connection pass; a mismatch answers "验证失败！" after a delay of
  // one second (that connection's thread alone waits) and is logged. Until the connection has
  // passed, every other command is answered "请先验证！", ends its conversation and is logged.
  // The check gates the command set (request id 1); conversations of other request ids that
  // the host registers with RegMonitor are its own to guard.
  // Default "": every phrase is accepted and nothing needs one.
  ZrUtf8String passVerifier;
  // A directory the file commands (LS, MD, R, RN, CP, UP, DOWN, FIND) cannot leave. Paths are
  // taken relative to it, as if it were "/" (the current directory too): "..", absolute
  // symbolic links and links leading out are refused by the kernel's resolution (openat2
  // RESOLVE_BENEATH; where it is missing, a walk that refuses every link). Refused commands
  // give their failure answers ("新建失败！", "此文件（夹）不存在！", ...). CP copies regular
  // files only. Opened files reach the listing and copy helpers as "/proc/self/fd/N", so /proc
  // must be mounted. FIND walks subdirectories by name: a directory swapped for a link during
  // the walk can show names (never contents) from outside. Default "": the whole file system.
  ZrUtf8String rootDir;
  // Connections served at once; one more is accepted, closed at once and logged. 0: no limit.
  int maxClients = 0;
  // Bytes of one received frame's payload and file-size table together (4 bytes a file, so
  // this also bounds the files of a frame); a larger frame closes the connection (logged).
  // 0: no limit.
  uint32_t maxPayloadSize = 0;
  // Bytes of one file a frame carries, either way: a larger one arriving closes the connection,
  // a larger one asked for with DOWN is answered "文件太大！" (both logged). 0: no limit.
  int64_t maxFileSize = 0;
  // Milliseconds a connection may stay silent before it is closed (logged). 0: no limit.
  int idleTimeoutMs = 0;
};

// The listening server: accepts connections and gives each one a link client of its own, which
// answers the peer through the service's monitor factories.
class ZRAD_EXPORT RvRemoteDebugService : public RvRemoteDebugCommunication {
 public:
  ZR_RX_DECLARE_MEMBERS(RvRemoteDebugService);
  typedef ZrSmartPtr<INetCom> (*MonitorFactory)(int reqId);

  // A service that will listen on `port` (stepping p, p+1, p+3, p+6, ... when taken).
  static ZrSmartPtr<RvRemoteDebugService> createObject(unsigned int port);

  // Enters or replaces the factory for `reqId`. Only before execute().
  void RegMonitor(unsigned int reqId, MonitorFactory factory);
  // The factory's conversation for `reqId`; none when no factory is registered.
  ZrSmartPtr<INetCom> createMonitor(unsigned int reqId) const override;

  // The port to bind before start; the port actually bound once execute() has returned (after
  // a failed bind, the last port tried).
  unsigned int getPort() const { return m_port.load(); }
  // True once the service listens (from the return of execute() until it stops).
  bool isListening() const { return m_listening.load(); }
  void setPort(unsigned int port) { m_port.store(port); }
  // Dotted IPv4 address to listen on; "" (the default) listens on every interface. Set it
  // before execute(); an address that does not parse makes binding fail.
  void setBindAddress(const ZrUtf8String& address) { m_bindAddress = address; }
  const ZrUtf8String& bindAddress() const { return m_bindAddress; }
  // Link clients whose thread still runs.
  int linkCount() const;
  // Told on a connection's own thread when the service starts serving it and when it ends,
  // with the peer as "a.b.c.d:port"; they may run on several threads at once. Both do nothing
  // unless a subclass overrides them (a host that logs connections).
  virtual void connectionOpened(const ZrUtf8String& peer) { (void)peer; }
  virtual void connectionClosed(const ZrUtf8String& peer) { (void)peer; }

  // Sets the protections that connections accepted from now on get; set them before
  // execute(). False (nothing changed) when the verifier is neither "" nor 32 hexadecimal
  // digits, or the root is not "" and names no directory.
  bool setProtections(const RvServiceProtections& protections);
  const RvServiceProtections& protections() const { return m_protections; }
  // The verifier of a pass phrase: the lower-case hexadecimal MD5 of its UTF-8 bytes.
  static ZrUtf8String passVerifierOf(const ZrUtf8String& phrase);

  // The accept loop: 1 after a stop (or a select failure), 0 when the service never listened.
  int server();

  void PrepareStart() override;  // registers the command monitor, binds and listens
  void Run() override;           // server(), then disconnects the link clients left

 protected:
  RvRemoteDebugService() = default;
  ~RvRemoteDebugService() override;

 private:
  void registerCommandMonitor();
  bool listenOnPort();
  void acceptOne();
  void pruneEnded();

  std::vector<ZrSmartPtr<RvRemoteLinkClient>> m_links;
  std::atomic<unsigned int> m_port{0};
  std::map<unsigned int, MonitorFactory> m_factories;
  ZrUtf8String m_bindAddress;
  RvServiceProtections m_protections;
  int m_listenSocket = -1;
  std::atomic<bool> m_listening{false};
};

// The service's end of one accepted connection.
class ZRAD_EXPORT RvRemoteLinkClient : public RvRemoteDebugCommunication {
 public:
  ZR_RX_DECLARE_MEMBERS(RvRemoteLinkClient);
  static ZrSmartPtr<RvRemoteLinkClient> createObject(ZrSmartPtr<RvRemoteDebugService> owner,
                                                     int sock);
  // Asks the owning service.
  ZrSmartPtr<INetCom> createMonitor(unsigned int reqId) const override;
  // The socket thread, under the owning service's protections.
  void Run() override;

 protected:
  RvRemoteLinkClient() = default;

 private:
  ZrSmartPtr<RvRemoteDebugService> m_owner;
};

// The connecting side: PrepareStart connects to the stored host and port.
class ZRAD_EXPORT RvRemoteDebugClient : public RvRemoteDebugCommunication {
 public:
  ZR_RX_DECLARE_MEMBERS(RvRemoteDebugClient);
  static ZrSmartPtr<RvRemoteDebugClient> createObject(const ZrUtf8String& host, int port);

  // Connects to a dotted IPv4 `host` (names are not resolved) and stores the socket. false,
  // logged as "connect ,create socket error", "connect ,inet_pton error" or
  // "connect ,connect socket error", when that fails; the socket stays 0. After a failed inet_pton
  // or connect the descriptor made for the attempt is left open (kept for compatibility).
  bool connect(const char* host, int port);

  void PrepareStart() override;

 protected:
  RvRemoteDebugClient() = default;

 private:
  ZrUtf8String m_host;
  int m_port = 0;
};

// ---- Command set and console (netcommand.cpp, console.cpp) ----

#include "json.h"  // the element-tree handles of synchronous commands

// CNetCommand is the conversation of request id 1: on a client it carries one console line
// (command word and two arguments) and shows the answer; on the service it is made by the
// monitor factory for every conversation a client opens and runs the command's handler.
// Payload after the message header: three strings (word, argument, argument), each a 32-bit
// count of 16-bit units (the low 16 bits of each character). Answers are strings the same way.
//
// Commands (answers in quotes; "/x" is the current directory joined with the argument):
//   HELLO          "欢迎连接 本机"
//   VER CD LA AI DEBUG   no answer text
//   LS [a] [b]     one string of listing lines: no arguments, every entry ("." and ".."
//                  too) as "name\r\n"; "-l", every entry but "." and ".." as a long line
//                  "%-40s  ||  %16d Byte  ||  %Y-%m-%d %H:%M:%S (ctime text, newline
//                  kept)  \r\n"; "-l pattern", the matching files as long lines; "pattern",
//                  the matching files as short lines; anything else, ""
//   FIND pattern   one string: every matching file name followed by ";\r\n"
//   O / CF name    openFile / closeFile (hooks that do nothing here), no answer text
//   LOF, AF        one string of open file names; empty here, since nothing tracks them
//   LC             "不支持"
//   MD dir         mkdir(0777): "新建成功！" / "新建失败！"
//   R name         removes file or tree: "删除成功！" / "删除失败！"
//   RN old new     "此文件（夹）不存在！" when old is missing, "修改成功！", nothing when
//                  rename fails
//   CP from to     last names of both, copied in the current directory: "复制成功！" /
//                  "复制失败！"
//   UP path        the client attaches the local file; the service stores it under a free
//                  name ("-副本" appended to the stem while taken): "上传成功！"
//   DOWN name      the service attaches the file; the console stores it under a free name and
//                  shows "已下载到：" + the stored path
//   CHECKPASS x    "验证成功！" for every pass phrase, unless the service has a verifier
//                  (RvServiceProtections: then "验证失败！" for a wrong one)
// An unknown word is refused by the client before anything is sent; one that arrives anyway
// is logged ("OnReceiveData, this:%p, Unkown cmd:%s", "utils/netcommand").
//
// Current directory: GetCurd() is "" unless the host sets one with setCurrentDir(); with ""
// the joined paths are absolute ("/tmp" for MD tmp, received files land in "/"), while LS and
// FIND list the process's current directory.
//
// Decisions taken here where the protocol leaves room:
// - DOWN of a missing file answers "此文件（夹）不存在！" and carries no file; so does DOWN of
//   anything but a regular file below 2 GiB (sizes travel as 32 bits, files as streams).
// - A received file (UP on the service, DOWN on the console) is stored under a free name that
//   is created exclusively: two stores of one name at once get two names, and a copy that fails
//   part-way (a full disk) removes what it wrote, so no partial file stays under any name.
// - UP that arrives without a file, or whose copy fails, answers "上传失败！". A client whose
//   local file is missing (or no regular file below 2 GiB) sends nothing and shows
//   ("UP", "此文件（夹）不存在！"). A DOWN whose copy fails shows nothing.
// - R with an empty name answers "删除失败！" and removes nothing: with the empty current
//   directory the path would be "/" itself.
// - UP, DOWN, MD, R, RN and CP whose name holds a zero character act on nothing and answer as
//   their operation failed ("上传失败！", "此文件（夹）不存在！", "新建失败！", "删除失败！",
//   nothing, "复制失败！"): the name cut at its zero would be another file's.
// - Both UP and DOWN take the stored name from the argument's last name, not from the
//   temporary name the file travelled under.
// - A name without "." has no extension when a free name is made: README, README-副本.
// - Answers reach the callback as one call per answer string, in order, with the command word
//   (upper-cased); LS and FIND therefore arrive as one call holding the whole listing. An
//   answer without strings makes no call. The client ends the conversation after the first
//   answer; handlers on the service always keep it open until then.
// - A service-side conversation that cannot read its three strings, or gets an unknown word,
//   ends at once (its reply carries no text).
// - In LS long lines a symbolic link carries its target as the second path; sizes are printed
//   in full 64 bits.
// What a console implements to take part: the pass-phrase prompt and the display of texts.
// Both are called on the client's socket thread for answers, on the caller's thread otherwise.
class ZRAD_EXPORT NetCommandClientCallBack {
 public:
  // Fills `passPhrase`; false when the user cancelled.
  virtual bool inputPassPhrase(ZrString& passPhrase) = 0;
  // Shows `text`, the answer to (or a note about) the command `word`.
  virtual bool showText(const ZrString& word, const ZrString& text) = 0;

 protected:
  ~NetCommandClientCallBack() = default;
};

class ZRAD_EXPORT CNetCommand : public ZradNetComImp<INetCom> {
 public:
  ZR_RX_DECLARE_MEMBERS(CNetCommand);
  typedef bool (CNetCommand::*Handler)(int reqId, ZrSmartPtr<RvNetPackage> received,
                                       ZrSmartPtr<RvNetPackage> reply);

  // The request id of console commands: 1.
  static int iReqId;
  // A service-side conversation (the monitor factory registered for iReqId).
  static ZrSmartPtr<INetCom> createNetCom(int reqId);

  int getReqId() const override;
  // The command word and its arguments, as opened or as read on the service.
  const ZrString& word() const { return m_word; }
  const ZrString& firstArgument() const { return m_arg1; }
  const ZrString& secondArgument() const { return m_arg2; }
  // Opening (reqId 0): upper-cases the word and writes the three strings (UP also attaches
  // its file); false when the word is not a command. Service (reqId 1): reads the strings and
  // runs the handler. Client, on the answer: shows it and returns false to end.
  bool OnReceiveData(int reqId, ZrSmartPtr<RvNetPackage> received,
                     ZrSmartPtr<RvNetPackage> reply) override;

  // ---- Console calls (console.cpp); they run on the host's thread. ----

  // Connects to "host" (port 6666) or "host:port" (strtol, base 10: "x" gives 0), host a
  // dotted IPv4 address, on a client thread named "调试客户线程"; then asks the callback for
  // the pass phrase and sends CHECKPASS with it. Null when the connection fails, when there is
  // no callback, or when the prompt is cancelled (then the callback shows ("CN", "取消登陆！")).
  // The second argument is not used.
  static ZrSmartPtr<RvRemoteDebugClient> cmdConnect(const ZrString& address, const ZrString& unused,
                                                    NetCommandClientCallBack* callback);
  // Queues one command and returns without waiting. "HELP" (exact) calls cmdHelp(nullptr) and
  // sends nothing: true. No endpoint: false. No socket, or "CN": true, nothing sent.
  // Otherwise the result of communicate(). Answers reach `callback` on the socket thread.
  static bool sendCommand(RvRemoteDebugCommunication* endpoint, const ZrString& command,
                          const ZrString& arg1, const ZrString& arg2,
                          NetCommandClientCallBack* callback);
  // The same rules for a UTF-8 word; the arguments are the string properties "arg1" and
  // "arg2" of `in` (missing: empty). Waits for the end of the conversation: up to `timeoutMs`,
  // or while the connection lasts when it is negative. True when it finished within that
  // time, false on time-out, abort or broken connection. The answer fills `out` (a writable
  // Object): "texts", an Array of the texts a callback would be shown, and for DOWN "path",
  // the stored file. After a time-out `out` is left alone.
  static bool sendSynCommand(RvRemoteDebugCommunication* endpoint, const ZrUtf8String& command,
                             int timeoutMs, ZrJsonPtr in, ZrJsonPtr out);
  // Shows the 21 help lines, each followed by "\r\n", as ("HELP", text); nothing for null.
  static void cmdHelp(NetCommandClientCallBack* callback);

  // The directory every command works in; "" by default. Set before services start (not
  // synchronised, like the temporary directory).
  static void setCurrentDir(const ZrString& dir);
  ZrString GetCurd(int connection);
  // Hooks for the host application: do nothing here.
  virtual void openFile(const ZrString& name);
  virtual void closeFile(const ZrString& name);

  // Handlers: each works only for reqId 1 (else returns true at once) and keeps the
  // conversation open.
  bool cmdHello(int reqId, ZrSmartPtr<RvNetPackage> received, ZrSmartPtr<RvNetPackage> reply);
  bool cmdVer(int reqId, ZrSmartPtr<RvNetPackage> received, ZrSmartPtr<RvNetPackage> reply);
  bool cmdAf(int reqId, ZrSmartPtr<RvNetPackage> received, ZrSmartPtr<RvNetPackage> reply);
  bool cmdLs(int reqId, ZrSmartPtr<RvNetPackage> received, ZrSmartPtr<RvNetPackage> reply);
  bool cmdCd(int reqId, ZrSmartPtr<RvNetPackage> received, ZrSmartPtr<RvNetPackage> reply);
  bool cmdO(int reqId, ZrSmartPtr<RvNetPackage> received, ZrSmartPtr<RvNetPackage> reply);
  bool cmdUp(int reqId, ZrSmartPtr<RvNetPackage> received, ZrSmartPtr<RvNetPackage> reply);
  bool cmdDown(int reqId, ZrSmartPtr<RvNetPackage> received, ZrSmartPtr<RvNetPackage> reply);
  bool cmdMd(int reqId, ZrSmartPtr<RvNetPackage> received, ZrSmartPtr<RvNetPackage> reply);
  bool cmdR(int reqId, ZrSmartPtr<RvNetPackage> received, ZrSmartPtr<RvNetPackage> reply);
  bool cmdRn(int reqId, ZrSmartPtr<RvNetPackage> received, ZrSmartPtr<RvNetPackage> reply);
  bool cmdLa(int reqId, ZrSmartPtr<RvNetPackage> received, ZrSmartPtr<RvNetPackage> reply);
  bool cmdAi(int reqId, ZrSmartPtr<RvNetPackage> received, ZrSmartPtr<RvNetPackage> reply);
  bool cmdLc(int reqId, ZrSmartPtr<RvNetPackage> received, ZrSmartPtr<RvNetPackage> reply);
  bool cmdCf(int reqId, ZrSmartPtr<RvNetPackage> received, ZrSmartPtr<RvNetPackage> reply);
  bool cmdDebug(int reqId, ZrSmartPtr<RvNetPackage> received, ZrSmartPtr<RvNetPackage> reply);
  bool cmdFind(int reqId, ZrSmartPtr<RvNetPackage> received, ZrSmartPtr<RvNetPackage> reply);
  bool cmdCp(int reqId, ZrSmartPtr<RvNetPackage> received, ZrSmartPtr<RvNetPackage> reply);
  bool cmdCheckPass(int reqId, ZrSmartPtr<RvNetPackage> received, ZrSmartPtr<RvNetPackage> reply);

 protected:
  CNetCommand(const ZrString& word, const ZrString& arg1, const ZrString& arg2,
              NetCommandClientCallBack* callback);

 private:
  friend class ZrRxObjectImpl<CNetCommand>;
  bool openConversation(ZrSmartPtr<RvNetPackage> request);
  bool serve(int reqId, ZrSmartPtr<RvNetPackage> received, ZrSmartPtr<RvNetPackage> reply);
  bool showAnswer(ZrSmartPtr<RvNetPackage> answer);
  // Shows answer texts to the callback and writes them (and a stored download) into `out`.
  void deliver(const std::vector<ZrString>& texts, const ZrString& stored);
  // True when the conversation ended within `timeoutMs` (negative: while connected).
  bool waitForEnd(RvRemoteDebugCommunication& endpoint, int timeoutMs);

  ZrString m_word;
  ZrString m_arg1;
  ZrString m_arg2;
  NetCommandClientCallBack* m_callback = nullptr;
  ZrJsonPtr m_in;   // synchronous commands: where the arguments came from
  ZrJsonPtr m_out;  // and where the answer goes
  bool m_opened = false;  // this end opened the conversation: what arrives is the answer
};
