#include "signing/library_codes.h"

#include <bit>
#include <string>

#include "host/editor.h"

namespace tv::signing {

namespace {

// An odd multiplier is invertible modulo 2^32; a rotation moves its low bits up.
constexpr std::uint32_t kMultiplier = 0x2545F491u;
constexpr int kRotation = 11;

constexpr std::uint32_t Inverse(std::uint32_t a) {
  std::uint32_t x = a;  // correct to 3 bits for any odd a; each step doubles that
  for (int i = 0; i < 5; ++i) x *= 2u - a * x;
  return x;
}
constexpr std::uint32_t kInverse = Inverse(kMultiplier);
static_assert(kMultiplier * kInverse == 1u);

}  // namespace

std::int32_t StoreCode(std::int32_t value) {
  const std::uint32_t v = std::rotl(static_cast<std::uint32_t>(value) * kMultiplier, kRotation);
  return static_cast<std::int32_t>(v);
}

std::int32_t RestoreCode(std::int32_t value) {
  const std::uint32_t v = std::rotr(static_cast<std::uint32_t>(value), kRotation) * kInverse;
  return static_cast<std::int32_t>(v);
}

std::optional<bool> AskKeepRecords(std::string_view question, bool libraryEmpty) {
  if (libraryEmpty) return true;
  const host::MessageAnswer answer =
      host::CurrentEditor().messageBox(question, "Tarvex", host::MessageButtons::YesNo);
  if (answer == host::MessageAnswer::Cancel) return std::nullopt;
  return answer == host::MessageAnswer::Yes;
}

bool AskAuthCode(std::int64_t& code) {
  std::int32_t typed = static_cast<std::int32_t>(code);
  const int rc = host::CurrentEditor().getInteger(
      "\n授权码：(注：授权码范围 0 - 999999，输入 0 表示无需授权) <" + std::to_string(code) + ">: ", typed);
  if (rc == host::RTCAN) return false;
  if (rc == host::RTNORM) code = typed;
  return true;
}

}  // namespace tv::signing
