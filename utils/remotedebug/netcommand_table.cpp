// The command table: one row per command word, in the order of the console's help text.
// Two help lines name no command (the console handles "!" and "(" lines itself), and
// CHECKPASS has no help line.
#include "remotedebug/netcommand_table.h"

namespace zrad::remote {
namespace {

struct CommandRow {
  const wchar_t* word;  // null: a help line only
  CNetCommand::Handler handler;
  const wchar_t* help;  // null: not shown in the help
};

const CommandRow kCommands[] = {
    {L"HELLO", &CNetCommand::cmdHello, L"HELLO     给服务器一个回响。"},
    {L"VER", &CNetCommand::cmdVer, L"VER       返回RV版本信息。"},
    {L"LOF", &CNetCommand::cmdAf, L"LOF       列出当前打开的文件。"},
    {L"LS", &CNetCommand::cmdLs, L"LS        显示当前文件夹文件列表。"},
    {L"CD", &CNetCommand::cmdCd, L"CD        切换到指定目录。"},
    {L"O", &CNetCommand::cmdO, L"O         让手机打开指定的文件。"},
    {L"UP", &CNetCommand::cmdUp, L"UP        上传文件到当前目录。"},
    {L"DOWN", &CNetCommand::cmdDown, L"DOWN      下载文件。"},
    {L"MD", &CNetCommand::cmdMd, L"MD        在当前文件夹下新建文件夹。"},
    {L"R", &CNetCommand::cmdR, L"R         删除文件夹（包括子目录下的文件）或文件。"},
    {L"RN", &CNetCommand::cmdRn, L"RN        将文件（夹）改名。"},
    {L"FIND", &CNetCommand::cmdFind, L"FIND      在当前文件夹下查找匹配文件或者文件夹。"},
    {L"CP", &CNetCommand::cmdCp, L"CP        拷贝文件。"},
    {L"LA", &CNetCommand::cmdLa, L"LA        列出当前所有安装的APP。"},
    {L"AI", &CNetCommand::cmdAi, L"AI        获取APP的信息。"},
    {nullptr, nullptr, L"!命令名   让平台执行某些命令。"},
    {L"LC", &CNetCommand::cmdLc, L"LC        列出可执行的命令。"},
    {nullptr, nullptr, L"(…)      执行 lisp语句。"},
    {L"CF", &CNetCommand::cmdCf, L"CF        关闭当前文件。"},
    {L"AF", &CNetCommand::cmdAf, L"AF        当前打开的文件名。"},
    {L"DEBUG", &CNetCommand::cmdDebug, L"DEBUG     注入调试指定APP。"},
    {L"CHECKPASS", &CNetCommand::cmdCheckPass, nullptr},
};

}  // namespace

CNetCommand::Handler findCommandHandler(const ZrString& word) {
  for (const CommandRow& row : kCommands)
    if (row.word && word == row.word) return row.handler;
  return nullptr;
}

ZrString commandHelpText() {
  ZrString text;
  for (const CommandRow& row : kCommands)
    if (row.help) text += ZrString(row.help) + L"\r\n";
  return text;
}

}  // namespace zrad::remote
