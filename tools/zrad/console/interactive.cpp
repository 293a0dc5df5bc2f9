// The console on a terminal: libedit line editing, history, completion and progress bars.
//
// Only the main thread writes to the terminal. Answers come on the client's socket thread;
// they are posted to a queue with a wake-up pipe, and the main thread shows them above the
// prompt (erase the prompt line, print, redraw), so an answer never tears a half-typed line.
// Ctrl-C reaches the main loop through a pipe as well: at the prompt it empties the typed line,
// during a wait it stops waiting (a late answer still shows when it comes).
#include <editline/readline.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <utility>

#include "console/answers.h"
#include "console/console.h"
#include "console/progress.h"

namespace zradtool {
namespace {

constexpr int kHistoryLines = 1000;
constexpr int kProgressTickMs = 200;
constexpr int kConnectionCheckMs = 500;

// A pipe whose reading end wakes poll(); writes from a signal handler are safe.
class WakePipe {
 public:
  WakePipe() {
    if (pipe2(m_fds, O_CLOEXEC | O_NONBLOCK) != 0) m_fds[0] = m_fds[1] = -1;
  }
  ~WakePipe() {
    for (int fd : m_fds)
      if (fd >= 0) close(fd);
  }
  void wake() const {
    if (write(m_fds[1], "", 1) < 0) {
      // Full: a wake-up is pending anyway.
    }
  }
  void drain() const {
    char buffer[64];
    while (read(m_fds[0], buffer, sizeof buffer) > 0) {
    }
  }
  int fd() const { return m_fds[0]; }

 private:
  int m_fds[2];
};

// Text posted by the socket thread, taken by the main thread.
class AnswerQueue {
 public:
  void post(const std::string& text) {
    {
      std::lock_guard<std::mutex> lock(m_mutex);
      m_pending += text;
    }
    m_wake.wake();
  }
  std::string take() {
    m_wake.drain();
    std::lock_guard<std::mutex> lock(m_mutex);
    std::string taken;
    taken.swap(m_pending);
    return taken;
  }
  int fd() const { return m_wake.fd(); }

 private:
  std::mutex m_mutex;
  std::string m_pending;
  WakePipe m_wake;
};

// ---- libedit's callbacks (plain functions, so the state they share is file-wide) ----

WakePipe* g_interrupts = nullptr;
std::string g_typed;
bool g_lineReady = false;
bool g_endOfInput = false;

void onInterrupt(int) { g_interrupts->wake(); }

// libedit reads keys through this, so the main loop can hand it a key of its own.
constexpr int kKillLine = 'U' & 0x1f;
int g_pendingKey = -1;

int readKey(FILE* in) {
  if (g_pendingKey >= 0) return std::exchange(g_pendingKey, -1);
  unsigned char key;
  return read(fileno(in), &key, 1) == 1 ? key : EOF;
}

void onLine(char* line) {
  if (!line) {
    g_endOfInput = true;
    return;
  }
  g_typed = line;
  g_lineReady = true;
  std::free(line);
}

char* nextCommandWord(const char* text, int state) {
  static size_t next;
  if (state == 0) next = 0;
  const std::vector<std::string>& words = commandWords();
  while (next < words.size()) {
    const std::string& word = words[next++];
    if (strncasecmp(word.c_str(), text, std::strlen(text)) == 0) return strdup(word.c_str());
  }
  return nullptr;
}

// The first word completes to a command word; the arguments to local file names.
char** completeLine(const char* text, int start, int) {
  for (int i = 0; i < start; ++i)
    if (rl_line_buffer[i] != ' ' && rl_line_buffer[i] != '\t') return nullptr;
  return rl_completion_matches(text, nextCommandWord);
}

std::string historyPath() {
  const char* home = std::getenv("HOME");
  return home && *home ? std::string(home) + "/.zrad_history" : std::string();
}

void showAbovePrompt(const std::string& text) {
  if (text.empty()) return;
  std::fputs("\r\033[K", stdout);
  std::fputs(text.c_str(), stdout);
  std::fflush(stdout);
  rl_forced_update_display();
}

// The progress line of an UP or DOWN: bytes through the socket since the command was sent.
class Progress {
 public:
  Progress(const ConsoleLine& line, int sock)
      : m_word(line.word), m_upload(line.word == "UP"), m_sock(sock),
        m_start(std::chrono::steady_clock::now()) {
    m_base = counter();
    struct stat info {};
    if (m_upload && stat(line.arg1.c_str(), &info) == 0) m_total = static_cast<uint64_t>(info.st_size);
  }
  void draw() const {
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - m_start).count();
    const std::string text = formatProgress(m_word, counter() - m_base, m_total, seconds);
    std::fprintf(stdout, "\r%s\033[K", text.c_str());
    std::fflush(stdout);
  }
  static void erase() {
    std::fputs("\r\033[K", stdout);
    std::fflush(stdout);
  }

 private:
  uint64_t counter() const { return m_upload ? socketBytesSent(m_sock) : socketBytesReceived(m_sock); }

  std::string m_word;
  bool m_upload;
  int m_sock;
  uint64_t m_base = 0;
  uint64_t m_total = 0;
  std::chrono::steady_clock::time_point m_start;
};

// Waits for `com` to end, showing answers as they come and, for UP and DOWN, the progress.
// false when the connection broke.
bool awaitAnswer(const ZrSmartPtr<INetCom>& com, const ConsoleLine& line, Session& session,
                 AnswerQueue& answers) {
  const bool transfer = (line.word == "UP" || line.word == "DOWN") && isatty(STDOUT_FILENO);
  const Progress progress(line, session.socket());
  while (!conversationEnded(com) && session.connected()) {
    pollfd fds[2] = {{answers.fd(), POLLIN, 0}, {g_interrupts->fd(), POLLIN, 0}};
    poll(fds, 2, kProgressTickMs);
    if (transfer) Progress::erase();
    std::fputs(answers.take().c_str(), stdout);
    if (fds[1].revents & POLLIN) {
      g_interrupts->drain();
      std::puts("^C (no longer waiting; the answer shows when it comes)");
      return true;
    }
    if (transfer && !conversationEnded(com)) progress.draw();
  }
  if (transfer) Progress::erase();
  std::fputs(answers.take().c_str(), stdout);
  std::fflush(stdout);
  return com->getStatus() != INetCom::kAborted && session.connected();
}

}  // namespace

int runInteractive(Session& session, const std::string& peer) {
  AnswerQueue queue;
  AnswerPrinter answers([&queue](const std::string& text) { queue.post(text); });
  WakePipe interrupts;
  g_interrupts = &interrupts;
  struct sigaction onCtrlC {}, previous {};
  onCtrlC.sa_handler = onInterrupt;
  sigaction(SIGINT, &onCtrlC, &previous);

  rl_getc_function = readKey;  // before anything makes libedit initialise
  const std::string history = historyPath();
  stifle_history(kHistoryLines);
  if (!history.empty()) read_history(history.c_str());
  rl_attempted_completion_function = completeLine;

  std::printf("connected to %s: HELP lists the commands, Ctrl-D leaves\n", peer.c_str());
  const std::string prompt = "zrad " + peer + "> ";
  const auto complain = [](const std::string& why) { std::fprintf(stderr, "%s\n", why.c_str()); };
  rl_callback_handler_install(prompt.c_str(), onLine);
  int status = 0;
  while (!g_endOfInput) {
    pollfd fds[3] = {{STDIN_FILENO, POLLIN, 0}, {queue.fd(), POLLIN, 0}, {interrupts.fd(), POLLIN, 0}};
    poll(fds, 3, kConnectionCheckMs);
    if (fds[1].revents & POLLIN) showAbovePrompt(queue.take());
    if (fds[2].revents & POLLIN) {
      interrupts.drain();
      g_pendingKey = kKillLine;  // libedit has no working way to empty its line but its own key
      rl_callback_read_char();
    }
    if (!session.connected()) {
      showAbovePrompt("the connection is closed\n");
      status = 1;
      break;
    }
    if (fds[0].revents & (POLLIN | POLLHUP)) rl_callback_read_char();
    if (!g_lineReady) continue;
    g_lineReady = false;
    rl_callback_handler_remove();
    if (!g_typed.empty()) add_history(g_typed.c_str());
    ZrSmartPtr<INetCom> com;
    ConsoleLine line;
    const LineAction action = carryOut(g_typed, session, answers, complain, com, line);
    std::fputs(queue.take().c_str(), stdout);
    if (action == LineAction::kLeave) break;
    if (action == LineAction::kSent && (!com || !awaitAnswer(com, line, session, queue))) {
      std::puts("the connection is closed");
      status = 1;
      break;
    }
    rl_callback_handler_install(prompt.c_str(), onLine);
  }
  rl_callback_handler_remove();
  if (g_endOfInput) std::putchar('\n');
  if (!history.empty()) write_history(history.c_str());
  sigaction(SIGINT, &previous, nullptr);
  g_interrupts = nullptr;
  return status;
}

}  // namespace zradtool
