#pragma once
// DWF files of this system are DWFx: XPS packages of fixed pages (an OPC zip holding a fixed
// document sequence, one fixed document and a FixedPage part per sheet, pictures as PNG parts,
// fonts as TrueType/OpenType parts). Every page keeps its pictures and fonts in a folder of its
// own, "/Documents/1/Resources/<page>/", so that pages of several files can be joined into one
// package by renumbering alone.
#include <string>
#include <vector>

namespace tv::render {

struct XpsResource {
  std::string name;   // within the page's resource folder, e.g. "3.png", "font1.ttf"
  std::string bytes;
};

struct XpsPage {
  double widthUnits = 0, heightUnits = 0;  // 1/96 inch
  int number = 1;                         // the page number its markup refers to
  std::string markup;                     // the FixedPage part
  std::vector<XpsResource> resources;
};

// "/Documents/1/Resources/<page>/<name>": where a page's resource is kept.
std::string XpsResourceUri(int page, const std::string& name);

// Writes the pages, in order, as one package at `path` (replacing it). False with the reason.
bool WriteXpsPackage(const std::string& path, std::vector<XpsPage> pages, std::string& error);

// The pages of a package this system wrote, renumbered from `firstNumber`. False with the reason
// when the file is not such a package.
bool ReadXpsPages(const std::string& path, int firstNumber, std::vector<XpsPage>& pages, std::string& error);

// Joins the packages' pages, in order, into one package at `target`. False with the reason.
bool MergeXpsPackages(const std::vector<std::string>& sources, const std::string& target, std::string& error);

}  // namespace tv::render
