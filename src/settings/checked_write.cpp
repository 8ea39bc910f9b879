#include "settings/checked_write.h"

#include "host/editor.h"
#include "host/text_files.h"

namespace tv::settings {

namespace {
constexpr std::string_view kCaption = "Tarvex打印";
}  // namespace

std::string WriteFailureText(const std::string& path) {
  return "文件 < " + path +
         " > 写入操作有误!\n\n\n可能原因如下：\n\n软件未获得文件的修改权限，造成无法对该文件进行修改。\n\n\n"
         "解决方法一：将软件重新安装至非系统目录下；\n\n解决方法二：请用管理员权限运行AutoCAD。";
}

void ReportWriteFailure(const std::string& path) {
  host::CurrentEditor().messageBox(WriteFailureText(path), kCaption, host::MessageButtons::Ok);
}

bool WriteTextFileChecked(const std::string& path, const std::string& utf8Text, bool reportFailure) {
  // The file is read back after the write: no time stamp, however fine, tells a failed write from
  // two saves close together as surely as the content does.
  const bool written = host::WriteTextFileReplacing(path, utf8Text);
  if (!written && reportFailure) ReportWriteFailure(path);
  return written;
}

}  // namespace tv::settings
