#pragma once
// Named records written into a drawing other than the working one (a sheet file being made).
#include <string>
#include <vector>

#include "host/xrecords.h"

namespace tv::cad {
class Database;
}

namespace tv::host {

// As WriteNamedXrecord, into `db`.
bool WriteNamedXrecordInto(cad::Database& db, const std::string& key, const std::vector<XrecordItem>& items);

}  // namespace tv::host
