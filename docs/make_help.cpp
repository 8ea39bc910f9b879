// Sets the help text in type: make_help SOURCE.txt OUTPUT.pdf
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "render/text_document.h"

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "用法：make_help 帮助.txt 帮助.pdf\n";
    return 1;
  }
  std::ifstream in(argv[1]);
  if (!in) {
    std::cerr << "make_help: 无法读取 " << argv[1] << '\n';
    return 2;
  }
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    lines.push_back(line);
  }
  const std::string error = tv::render::WriteTextPdf(argv[2], lines);
  if (!error.empty()) {
    std::cerr << "make_help: " << error << '\n';
    return 2;
  }
  return 0;
}
