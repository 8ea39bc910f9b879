#pragma once
// What the signature and stamp libraries share: the enciphering of the numbers they keep (library
// number, approval codes), the order their writers put records in, and the keep question of an
// import.
#include <algorithm>
#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>

namespace tv::signing {

// A reversible pair of maps of 32-bit integers, both taking 0 to 0, so that a library file shows
// no approval code in clear.
std::int32_t StoreCode(std::int32_t value);
std::int32_t RestoreCode(std::int32_t value);

// The writers' sort: for i from the last record down, every earlier record whose key compares
// greater (byte order of UTF-8, which is code point order) changes place with record i.
template <class Records, class Key>
void SortRecordsByKey(Records& records, Key key) {
  for (std::size_t i = records.size(); i-- > 0;)
    for (std::size_t j = 0; j < i; ++j)
      if (key(*records[j]) > key(*records[i])) std::swap(records[j], records[i]);
}

// Asks `question` (title "Tarvex", Yes and No) when the library holds records: true to keep them,
// also without asking when it is empty; nullopt when the question got no answer.
std::optional<bool> AskKeepRecords(std::string_view question, bool libraryEmpty);

// Asks a record's approval code with its range, Enter keeping `code`; false when cancelled.
bool AskAuthCode(std::int64_t& code);

// The facts of a library file about to be read, for whoever wants to refuse a file cut short or
// one that is no library at all: its version, the record count it announces, and whether every
// value was there, the version is a date, the count is not negative and nothing follows the
// last record.
struct LibraryFileFacts {
  std::int32_t version = 0;
  std::int32_t recordCount = 0;
  bool complete = false;
};

}  // namespace tv::signing
