// The text of the private plotter configuration and its model file. Every line is the host's own
// and is kept byte for byte: texts `key="value` have no closing quote, and numbered groups run
// from 0.
#include <array>
#include <cmath>
#include <cstdio>
#include <string>
#include <string_view>

#include "paper/plotter_writer.h"
#include "settings/plot_setting.h"
#include "settings/resolution.h"

namespace tv::paper {

namespace {

constexpr std::string_view kFileMarker = "PIAFILEVERSION_2.0,PC3VER1";

// The format block of the head.
struct ModelFamily {
  std::string_view tagLine;
  int driverType;
  std::string_view familyName;
  std::string_view modelName;
  std::string_view localizedFamily;
  std::string_view localizedModel;
  bool fileOnly;
  std::string_view modelAbilities;
};

constexpr std::array<ModelFamily, 6> kFamilies{{
    {"PDF ePlot - by Autodesk", 3, "Autodesk ePlot", "pdf", "Autodesk ePlot (PDF)", "DWG To PDF", true, "000550055000"},
    {"DWF ePlot - by Autodesk", 3, "Autodesk ePlot", "DWF6_ePlot_for_plotting", "Autodesk ePlot (DWF)", "DWF6 ePlot", true,
     "000550055000"},
    {"Raster File Formats - by Autodesk", 0, "Raster File Formats", "jfif", "Raster File Formats",
     "Independent JPEG Group JFIF (JPEG Compression)", true, "000000055000"},
    {"Raster File Formats - by Autodesk", 0, "Raster File Formats", "png", "Raster File Formats",
     "Portable Network Graphics PNG (LZH Compression)", true, "000000055000"},
    {"HPGL/2 - by Autodesk", 0, "HP", "DMSXP7595C", "HP", "DraftMaster SX Plus Sheet Feed 7595C", false, "000550055000"},
    {"", 0, "Adobe", "PS10", "Adobe", "Postscript Level 1", false, "555555555555"},
}};

// The media part of a model file by format.
struct ModelLimits {
  std::string_view abilities;
  std::string_view sizeMax;
  bool rollHeight;
};

constexpr std::array<ModelLimits, 6> kLimits{{
    {"500005500500505555000005550000000550000500000500000", "5080.0", false},
    {"500005500500505555000005550000000550000500000500000", "320000.00000", false},
    {"500505500500505555000005550000000550000500000500555", "320000.00000", true},
    {"500505500500505555000005550000000550000500000500555", "320000.00000", true},
    {"555555555555505555000505550000555550000550550500550", "320000.00000", false},
    {"555555555555505555000055550000555550000550550550555", "320000.00000", false},
}};

std::size_t FormatIndex(std::int32_t format) {
  return format >= 0 && format < static_cast<std::int32_t>(kFamilies.size()) ? static_cast<std::size_t>(format) : 0;
}

class Lines {
 public:
  Lines& operator<<(std::string_view line) {
    text_.append(line);
    text_.push_back('\n');
    return *this;
  }
  void add(std::string_view key, std::string_view value) {
    text_.append(key);
    text_.append(value);
    text_.push_back('\n');
  }
  std::string take() { return std::move(text_); }

 private:
  std::string text_;
};

std::string Printf(const char* format, double a) {
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, format, a);
  return buffer;
}

// A version test with room for the way the version was put together from its digits.
bool VersionAtLeast(double version, double bound) { return version >= bound - 1e-9; }
bool VersionAtMost(double version, double bound) { return version <= bound + 1e-9; }

void WriteMeta(Lines& out, const PlotterOptions& options, const std::string& pmpPath, const std::string& hdiPath) {
  const std::size_t f = FormatIndex(options.format);
  const ModelFamily& family = kFamilies[f];
  out << kFileMarker << "meta{";
  out.add("user_defined_model_pathname=\"", pmpPath);
  out << "user_defined_model_basename=\"";
  out.add("driver_pathname=\"", hdiPath);
  out << "driver_version=\"1";
  out.add("driver_tag_line=\"", family.tagLine);
  out << "toolkit_version=1";
  out.add("driver_type=", std::to_string(family.driverType));
  out.add("canonical_family_name=\"", family.familyName);
  out << "show_custom_first=TRUE"
      << "truetype_as_text=TRUE";
  out.add("canonical_model_name=\"", family.modelName);
  out.add("localized_family_name=\"", family.localizedFamily);
  out.add("localized_model_name=\"", family.localizedModel);
  out.add("file_only=", family.fileOnly ? "TRUE" : "FALSE");
  out.add("model_abilities=\"", family.modelAbilities);
  out << "udm_description=\"";
  if (options.format == settings::kFormatEps) out << "win_device_name=\"" << "win_driver_name=\"";
  out << "short_net_name=\"" << "friendly_net_name=\"";
  if (options.format == settings::kFormatPdf || options.format == settings::kFormatDwf) {
    out << "dm_driver_version=0" << "default_system_cfg=FALSE";
    out.add("platform=\"", options.format == settings::kFormatPdf ? "2,6,2" : "2,5,1");
    out << "locale=\"4B00409";
  }
  out << "config_description=\"" << "config_autospool=FALSE" << "}";
}

// ---- the configuration's custom entries ----------------------------------------------------------

struct Custom {
  std::string name;
  std::string value;  // the whole value line
};

constexpr std::string_view kTrue = "value=TRUE";
constexpr std::string_view kFalse = "value=FALSE";

std::string Value(std::int64_t v) { return "value=" + std::to_string(v); }

std::vector<Custom> CustomEntries(const PlotterOptions& options, const std::string& hdiPath) {
  const std::string vectorDpi = Value(DpiOfSlider(options.vectorStep));
  const std::string rasterDpi = Value(DpiOfSlider(options.rasterStep));
  const std::string bgr = Value(BgrOf(options));
  const std::string_view geometry = options.textAsGraphics ? kTrue : kFalse;
  switch (options.format) {
    case settings::kFormatDwf:
      return {{"Custom_Monochrome_Resolution", std::string(kTrue)},
              {"Custom_Gradient_Resolution", std::string(kTrue)},
              {"Custom_Raster_Resolution", std::string(kTrue)},
              {"Custom_DWF_Resolution", std::string(kTrue)},
              {"Hardcopy_Resolution", vectorDpi},
              {"Raster_Limit", rasterDpi},
              {"Monochrome_Raster_Limit", rasterDpi},
              {"Gradient_Limit", rasterDpi},
              {"All_As_Geometry", std::string(geometry)},
              {"Include_Preview", std::string(kFalse)},
              {"Capture", "value=2"},
              {"Thumbnail_And_Preview", std::string(kTrue)},
              {"SuperDWF_Opcodes", std::string(kTrue)},
              {"Optimized_For_Plotting", std::string(kTrue)},
              {"Font_Capture", std::string(kTrue)},
              {"Color_Depth_Control", std::string(kTrue)},
              {"File_Format", "value=600"},
              {"Show_Paper_Boundaries", std::string(kTrue)},
              {"Convert_DWG_to_DWF", std::string(kFalse)},
              {"Include_Measurement", std::string(kTrue)},
              {"Include_Scale", std::string(kTrue)},
              {"Include_Data_For_Markup", std::string(kTrue)},
              {"Include_Layer", std::string(kTrue)},
              {"Background_Color", bgr},
              {"Format", "value=2"},
              {"Resolution", "value=18"}};
    case settings::kFormatJpg:
      return {{"RASTER_CALS_Twist", std::string(kFalse)},
              {"RASTER_CALS_Twist_Ability", std::string(kFalse)},
              {"RASTER_RGB_Back_Color", bgr}};
    case settings::kFormatPng:
      if (VersionAtLeast(options.hostVersion, 24.3))
        return {{"RASTER_Transparent_Background", std::string(kTrue)},
                {"RASTER_CALS_Twist", std::string(kFalse)},
                {"RASTER_Transparent_Background_Ability", std::string(kTrue)},
                {"RRASTER_CALS_Twist_Ability", std::string(kFalse)},  // the host's own spelling
                {"RASTER_RGB_Back_Color", bgr},
                {"RASTER_File_Type", "value=\"PNG"},
                {"RASTER_Compression_Type", "value=\"PNG"}};
      return {{"RASTER_CALS_Twist", std::string(kFalse)},
              {"RASTER_CALS_Twist_Ability", std::string(kFalse)},
              {"RASTER_RGB_Back_Color", bgr},
              {"RASTER_IE_Module_Name", "value=\"iepngwr70.dll"},
              {"RASTER_IE_Compression_Type", "value=\"PNG"},
              {"RASTER_IE_File_Type", "value=\"PNG"}};
    case settings::kFormatPlt:
      return {{"Override_Front_Panel", std::string(kFalse)},
              {"Gamma_Correction", "value=1.0"},
              {"Print_Quality", "value=100"},
              {"Merge_Control", std::string(kFalse)},
              {"Old_HPGL2_Printer", std::string(kFalse)},
              {"Optional_RTL_Cmds_Supported", "value=0"},
              {"Optional_HPGL2_Cmds_Supported", "value=125"}};
    case settings::kFormatEps:
      return {{"Override_File_Extension", "value=\"EPS"},
              {"PS_Error_File", "value=\"Built In Handler"},
              {"Tokenize_Postscipt_Code", std::string(kTrue)},  // the host's own spelling
              {"JPEG_Compression", std::string(kTrue)},
              {"CCITT_4_Compression", std::string(kFalse)},
              {"CCITT_3_Compression", std::string(kFalse)},
              {"RLE_Compression", std::string(kTrue)},
              {"PS_Format", std::string(kFalse)},
              {"Timers", std::string(kFalse)},
              {"EPSF", std::string(kFalse)},
              {"WMF", std::string(kTrue)},
              {"Delta_Compression", std::string(kTrue)},
              {"Control_B_Compression", std::string(kFalse)},
              {"Postscript_Error_Handler", std::string(kTrue)},
              {"Control_Z", std::string(kFalse)},
              {"Control_D", std::string(kFalse)},
              {"Postscript_Level", "value=1.0"}};
    default:
      break;
  }
  // PDF. Hosts 20.1 to 21.0 lose text in PDF unless it is drawn as geometry.
  const bool asGeometry = options.textAsGraphics ||
                          (VersionAtLeast(options.hostVersion, 20.1) && VersionAtMost(options.hostVersion, 21.0));
  std::vector<Custom> entries{{"Custom_Raster_Resolution", std::string(kTrue)},
                              {"Custom_DWF_Resolution", std::string(kTrue)},
                              {"Custom_Monochrome_Resolution", std::string(kTrue)},
                              {"Custom_Gradient_Resolution", std::string(kTrue)},
                              {"Hardcopy_Resolution", vectorDpi},
                              {"Raster_Limit", rasterDpi},
                              {"Monochrome_Raster_Limit", rasterDpi},
                              {"Gradient_Limit", rasterDpi},
                              {"All_As_Geometry", std::string(asGeometry ? kTrue : kFalse)},
                              {"Capture", "value=2"},
                              {"Resolution", "value=14"},
                              {"Font_Capture", std::string(kTrue)},
                              {"Include_Layer", std::string(kTrue)}};
  std::string upper = hdiPath;
  for (char& c : upper)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  const std::size_t at = upper.find("PDFPLOT9.HDI");
  // The oldest PDF driver takes the options of the DWF family it came from.
  if (at != std::string::npos && at >= 1) {
    entries.insert(entries.end(), {{"Include_Preview", std::string(kFalse)},
                                   {"Thumbnail_And_Preview", std::string(kFalse)},
                                   {"SuperDWF_Opcodes", std::string(kTrue)},
                                   {"Optimized_For_Plotting", std::string(kTrue)},
                                   {"Color_Depth_Control", std::string(kTrue)},
                                   {"File_Format", "value=50"},
                                   {"Show_Paper_Boundaries", std::string(kFalse)},
                                   {"Convert_DWG_to_DWF", std::string(kFalse)},
                                   {"Include_Measurement", std::string(kTrue)},
                                   {"Include_Scale", std::string(kTrue)},
                                   {"Background_Color", "value=16777215"},
                                   {"Format", "value=0"}});
  } else {
    entries.push_back({"View_New_File", std::string(kFalse)});
  }
  return entries;
}

}  // namespace

std::int32_t DpiOfSlider(std::int32_t step) { return settings::ResolutionDpi(step); }

double EnlargeOf(const PlotterOptions& options) {
  const bool image = options.format == settings::kFormatJpg || options.format == settings::kFormatPng;
  return image && options.imageScaleStep > 0 ? settings::ImageScaleFactor(options.imageScaleStep) : 1.0;
}

std::uint32_t BgrOf(const PlotterOptions& options) {
  return static_cast<std::uint32_t>((options.blue * 256 + options.green) * 256 + options.red);
}

std::string PrivatePlotterName(std::int32_t format) {
  static constexpr std::array<std::string_view, 6> kNames{"T_PDF.pc3", "T_DWF.pc3", "T_JPG.pc3",
                                                          "T_PNG.pc3", "T_PLT.pc3", "T_EPS.pc3"};
  return format >= 0 && format < 6 ? std::string(kNames[static_cast<std::size_t>(format)]) : std::string();
}

std::string PrivateModelName(std::int32_t format) {
  std::string name = PrivatePlotterName(format);
  if (!name.empty()) name.replace(name.size() - 3, 3, "pmp");
  return name;
}

std::vector<ModelMedium> ModelMediaOf(const PaperList& papers, const PlotterOptions& options) {
  const double enlarge = EnlargeOf(options);
  auto medium = [&](double w, double h, std::string name) {
    double m = std::abs(options.margin) * enlarge;
    w *= enlarge;
    h *= enlarge;
    if (options.margin > 0) {
      // The paper grows and the sheet keeps its size: a white edge round it.
      w += 2 * m;
      h += 2 * m;
    } else if (!(w - 2 * m > 0) || !(h - 2 * m > 0)) {
      m = 0;
    }
    ModelMedium out;
    out.width = w;
    out.height = h;
    out.inset = m;
    out.printableArea = (w - 2 * m) * (h - 2 * m);
    out.localeName = std::move(name);
    char text[256];
    std::snprintf(text, sizeof text, "P_(%.2f_x_%.2f_MM)", w, h);
    out.canonicalName = text;
    std::snprintf(text, sizeof text, "P_%.2fW_x_%.2fH_-_(%.2f,_%.2f)_x_(%.2f,_%.2f)_=%.2f_MM", w, h, m, m, w - m, h - m,
                  out.printableArea);
    out.descriptionName = text;
    return out;
  };
  std::vector<ModelMedium> media;
  for (const auto& paper : papers) {
    if (!paper) continue;
    const std::string name = PaperNameOf(*paper);
    media.push_back(medium(paper->length, paper->width, name));
    if (paper->length != paper->width) media.push_back(medium(paper->width, paper->length, name + "T"));
  }
  return media;
}

std::string Pc3Text(const PlotterOptions& options, const std::string& pmpPath, const std::string& hdiPath) {
  Lines out;
  WriteMeta(out, options, pmpPath, hdiPath);
  // The configuration's own medium is a placeholder; the media of the job are in the model file.
  out << "media{" << "selection_method=2" << "type=\"" << "dm_orientation=1" << "actual_printable_bounds_llx=0.0"
      << "actual_printable_bounds_lly=0.0" << "actual_printable_bounds_urx=594.0" << "actual_printable_bounds_ury=420.0"
      << "number_of_copies=1" << "size{" << "name=\"UserDefinedMetric (594.00 x 420.00毫米)" << "group=0"
      << "landscape_mode=TRUE" << "longplot_reduction=1.0" << "media_description{" << "printable_bounds_llx=0.0"
      << "printable_bounds_lly=0.0" << "printable_bounds_urx=594.0" << "printable_bounds_ury=420.0"
      << "printable_area=249480.00000" << "dimensional=TRUE" << "media_bounds{" << "urx=594.0" << "ury=420.0" << "}"
      << "}" << "}" << "}";
  out << "io{" << "type=2" << "pathname=\"" << "allsysvalid=FALSE" << "plot_to_file=TRUE" << "}";
  out << "res_color_mem{" << "name=\"RGB" << "num_colors=16777216" << "color_depth=32"
      << "num_undithered_colors=16777216" << "color_system=1" << "dm_color=1" << "lines_overwrite=TRUE"
      << "resolution{" << "name=\"Default" << "phys_resolution_x=600.0" << "phys_resolution_y=600.0"
      << "addr_resolution_x=1.0" << "addr_resolution_y=1.0" << "effective_resolution_x=600.0"
      << "effective_resolution_y=600.0" << "}" << "}";
  out << "custom{";
  const std::vector<Custom> entries = CustomEntries(options, hdiPath);
  for (std::size_t n = 0; n < entries.size(); ++n) {
    out.add(std::to_string(n), "{");
    out.add("name=\"", entries[n].name);
    out << entries[n].value << "}";
  }
  out << "}";
  return out.take();
}

std::string PmpText(const PaperList& papers, const PlotterOptions& options, const std::string& pmpPath,
                    const std::string& hdiPath) {
  Lines out;
  WriteMeta(out, options, pmpPath, hdiPath);
  const ModelLimits& limits = kLimits[FormatIndex(options.format)];
  out << "udm{" << "calibration{" << "_x=1.0" << "_y=1.0" << "}" << "media{";
  out.add("abilities=\"", limits.abilities);
  out << "caps_state=\"000000000000000000000000000000000000000000000000000" << "ui_owner=\"11111111111111111111110";
  out.add("size_max_x=", limits.sizeMax);
  out.add("size_max_y=", limits.sizeMax);
  if (limits.rollHeight) out << "max_roll_height=320000.00000";

  const std::vector<ModelMedium> media = ModelMediaOf(papers, options);
  out << "size{";
  for (std::size_t n = 0; n < media.size(); ++n) {
    out.add(std::to_string(n), "{");
    out << "caps_type=2";
    out.add("name=\"", media[n].canonicalName);
    out.add("localized_name=\"", media[n].localeName);
    out.add("media_description_name=\"", media[n].descriptionName);
    out << "media_group=15" << "landscape_mode=TRUE" << "}";
  }
  out << "}" << "description{";
  for (std::size_t n = 0; n < media.size(); ++n) {
    const ModelMedium& m = media[n];
    out.add(std::to_string(n), "{");
    out << "caps_type=2";
    out.add("name=\"", m.descriptionName);
    out.add("media_bounds_urx=", Printf("%.1f", m.width));
    out.add("media_bounds_ury=", Printf("%.1f", m.height));
    out.add("printable_bounds_llx=", Printf("%.1f", m.inset));
    out.add("printable_bounds_lly=", Printf("%.1f", m.inset));
    out.add("printable_bounds_urx=", Printf("%.1f", m.width - m.inset));
    out.add("printable_bounds_ury=", Printf("%.1f", m.height - m.inset));
    out.add("printable_area=", Printf("%.1f", m.printableArea));
    out << "dimensional=TRUE" << "}";
  }
  out << "}";
  // Plotters and printers feed their paper from a source that must name every medium.
  if (options.format == settings::kFormatPlt || options.format == settings::kFormatEps) {
    const bool plt = options.format == settings::kFormatPlt;
    out << "source{" << (plt ? "Manual_Source{" : "SheetSrc{") << "caps_type=0" << "entry{"
        << (plt ? "Manual_Feed{" : "Standard_Tray{") << "size_names{";
    for (std::size_t n = 0; n < media.size(); ++n) {
      out.add(std::to_string(n), "{");
      out.add("name=\"", media[n].canonicalName);
      out << "caps_type=2" << "}";
    }
    out << "}" << "}" << "}" << "}" << "}";
  }
  out << "}" << "}";
  return out.take();
}

}  // namespace tv::paper
