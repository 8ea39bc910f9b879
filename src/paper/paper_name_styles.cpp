// Replacement keys of the paper naming styles, and the explanation of each style.
#include "paper/paper.h"
#include "paper/paper_tables_internal.h"

namespace tv::paper::internal {
namespace {

// Order matters: "_Plus_1+1" is a prefix of the 11-8 .. 19-8 keys and comes before them, so those
// names are rewritten by its row. Users' existing file names depend on that; keep the order.
constexpr StyleRow kStyleRows[] = {
    // key, style 1, style 2, style 3/6 A3, style 3, style 4, style 6
    {"_Plus_1+1-8", "+0.125", "1.125", "+0.25", "+0.5", "+1\u22158", "+1"},
    {"_Plus_1+1-4", "+0.25", "1.25", "+0.5", "+1", "+", "+2"},
    {"_Plus_1+3-8", "+0.375", "1.375", "+0.75", "+1.5", "+3\u22158", "+3"},
    {"_Plus_1+1-2", "+0.5", "1.5", "+1", "+2", "++", "+4"},
    {"_Plus_1+5-8", "+0.625", "1.625", "+1.25", "+2.5", "+5\u22158", "+5"},
    {"_Plus_1+3-4", "+0.75", "1.75", "+1.5", "+3", "+++", "+6"},
    {"_Plus_1+7-8", "+0.875", "1.875", "+1.75", "+3.5", "+7\u22158", "+7"},
    {"_Plus_1+1", "+1", "2", "+2", "+4", "++++", "+8"},
    {"_Plus_1+9-8", "+1.125", "2.125", "+2.25", "+4.5", "", "+9"},
    {"_Plus_1+5-4", "+1.25", "2.25", "+2.5", "+5", "+++++", "+10"},
    {"_Plus_1+11-8", "+1.375", "2.375", "+2.75", "+5.5", "", "+11"},
    {"_Plus_1+3-2", "+1.5", "2.5", "+3", "+6", "++++++", "+12"},
    {"_Plus_1+13-8", "+1.625", "2.625", "+3.25", "+6.5", "", "+13"},
    {"_Plus_1+7-4", "+1.75", "2.75", "+3.5", "+7", "+++++++", "+14"},
    {"_Plus_1+15-8", "+1.875", "2.875", "+3.75", "+7.5", "", "+15"},
    {"_Plus_1+2", "+2", "3", "+4", "+8", "++++++++", "+16"},
    {"_Plus_1+17-8", "+2.125", "3.125", "+4.25", "+8.5", "", "+17"},
    {"_Plus_1+9-4", "+2.25", "3.25", "+4.5", "+9", "+++++++++", "+18"},
    {"_Plus_1+19-8", "+2.375", "3.375", "+4.75", "+9.5", "", "+19"},
    {"_Plus_1+5-2", "+2.5", "3.5", "+5", "+10", "++++++++++", "+20"},
    {"_Plus_1+3", "+3", "4", "+6", "+12", "++++++++++++", "+24"},
    {"_Plus_1+7-2", "+3.5", "4.5", "+7", "+14", "++++++++++++++", "+28"},
};
static_assert(std::size(kStyleRows) == 22);

constexpr std::string_view kStyleChoices[] = {
    "国标", "方式01", "方式02", "方式03（浙江图审）", "方式04", "方式05", "方式06（甘肃图审）",
};

constexpr std::string_view kStyleLabels[] = {
    "(按国标命名)",
    "(加长比例折算为数字)",
    "(加长比例折算为数字)",
    "(A3每增加1/2幅宽加1，A2、A1、A0每增加1/4幅宽加1)",
    "(每增加1/4幅宽加一个“+”)",
    "(所有加长图幅均用一个“+”表示)",
    "(A3每增加1/2幅宽加1，A2、A1、A0每增加1/8幅宽加1)",
};
static_assert(std::size(kStyleChoices) == 7 && std::size(kStyleLabels) == 7);

}  // namespace

std::span<const StyleRow> NameStyleRows() { return kStyleRows; }

}  // namespace tv::paper::internal

namespace tv::paper {

std::string_view PaperNameStyleChoice(std::int32_t style) {
  if (style < 0 || style >= kPaperNameStyleCount) return {};
  return internal::kStyleChoices[style];
}

std::string_view PaperNameStyleLabel(std::int32_t style) {
  if (style < 0 || style >= kPaperNameStyleCount) return {};
  return internal::kStyleLabels[style];
}

}  // namespace tv::paper
