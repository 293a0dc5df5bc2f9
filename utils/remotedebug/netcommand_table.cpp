// The command table: one row per command word, in the order of the console's help text.
// Two help lines name no command (the console handles "!" and "(" lines itself), and
// CHECKPASS has no help line.
#include "remotedebug/netcommand_table.h"

namespace zrad::remote {
namespace {

struct CommandRow {
  const wchar_t* word;  // null: a help line only
  Command command;
  const wchar_t* help;  // null: not shown in the help
};

const CommandRow kCommands[] = {
    {L"HELLO", {&CNetCommand::cmdHello, false, nullptr}, L"HELLO     给服务器一个回响。"},
    {L"VER", {&CNetCommand::cmdVer, false, nullptr}, L"VER       返回RV版本信息。"},
    {L"LOF", {&CNetCommand::cmdAf, false, nullptr}, L"LOF       列出当前打开的文件。"},
    {L"LS", {&CNetCommand::cmdLs, false, nullptr}, L"LS        显示当前文件夹文件列表。"},
    {L"CD", {&CNetCommand::cmdCd, false, nullptr}, L"CD        切换到指定目录。"},
    {L"O", {&CNetCommand::cmdO, false, nullptr}, L"O         让手机打开指定的文件。"},
    {L"UP", {&CNetCommand::cmdUp, true, L"上传失败！"}, L"UP        上传文件到当前目录。"},
    {L"DOWN", {&CNetCommand::cmdDown, true, kMissingFile}, L"DOWN      下载文件。"},
    {L"MD", {&CNetCommand::cmdMd, true, L"新建失败！"}, L"MD        在当前文件夹下新建文件夹。"},
    {L"R", {&CNetCommand::cmdR, true, L"删除失败！"}, L"R         删除文件夹（包括子目录下的文件）或文件。"},
    {L"RN", {&CNetCommand::cmdRn, true, nullptr}, L"RN        将文件（夹）改名。"},
    {L"FIND", {&CNetCommand::cmdFind, false, nullptr}, L"FIND      在当前文件夹下查找匹配文件或者文件夹。"},
    {L"CP", {&CNetCommand::cmdCp, true, L"复制失败！"}, L"CP        拷贝文件。"},
    {L"LA", {&CNetCommand::cmdLa, false, nullptr}, L"LA        列出当前所有安装的APP。"},
    {L"AI", {&CNetCommand::cmdAi, false, nullptr}, L"AI        获取APP的信息。"},
    {nullptr, {}, L"!命令名   让平台执行某些命令。"},
    {L"LC", {&CNetCommand::cmdLc, false, nullptr}, L"LC        列出可执行的命令。"},
    {nullptr, {}, L"(…)      执行 lisp语句。"},
    {L"CF", {&CNetCommand::cmdCf, false, nullptr}, L"CF        关闭当前文件。"},
    {L"AF", {&CNetCommand::cmdAf, false, nullptr}, L"AF        当前打开的文件名。"},
    {L"DEBUG", {&CNetCommand::cmdDebug, false, nullptr}, L"DEBUG     注入调试指定APP。"},
    {L"CHECKPASS", {&CNetCommand::cmdCheckPass, false, nullptr}, nullptr},
};

}  // namespace

const Command* findCommand(const ZrString& word) {
  for (const CommandRow& row : kCommands)
    if (row.word && word == row.word) return &row.command;
  return nullptr;
}

ZrString commandHelpText() {
  ZrString text;
  for (const CommandRow& row : kCommands)
    if (row.help) text += ZrString(row.help) + L"\r\n";
  return text;
}

}  // namespace zrad::remote
