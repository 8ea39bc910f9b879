#pragma once
// `--preview N` of the listing commands: row N's preview image, written as the review list's
// preview writes it.
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "cli/subcommand.h"
#include "console/console_editor.h"
#include "console/text_table.h"
#include "console/session.h"
#include "plot/row_preview.h"

namespace tv::cli {

// The image's path; nullopt, with the reason on the error stream after `command`, when there is none.
template <class Form>
std::optional<std::string> PreviewOf(Form& form, std::size_t number, console::Session& session, CliStreams& io,
                                     std::string_view command) {
  if (number > form.rows.size()) {
    io.err << command << ": 没有第 " << number << " 张图纸（共 " << form.rows.size() << " 张）\n";
    return std::nullopt;
  }
  const std::size_t before = session.editor().previews().size();
  const std::size_t told = session.editor().messages().size();
  if (plot::PreviewRow(form, number - 1) && session.editor().previews().size() > before)
    return session.editor().previews().back();
  const auto& messages = session.editor().messages();
  io.err << command << ": "
         << (messages.size() > told ? console::OneLine(messages.back())
                                    : "无法预览第 " + std::to_string(number) + " 张图纸")
         << '\n';
  return std::nullopt;
}

}  // namespace tv::cli
