#pragma once
// Approval of placed signatures: a signature whose owner locked it with a code prints only when
// the code was given for this drawing and the granted days haven't run out.
#include <cstdint>
#include <string>
#include <vector>

#include "host/object_id.h"

namespace tv::signing {

class TV_Sign_Class;

// Today as yyyymmdd on the local calendar.
std::int32_t TodayNumber();
// `yyyymmdd` moved by `days` on the calendar.
std::int32_t AddDays(std::int32_t yyyymmdd, std::int32_t days);

// Computes code_ok and date_ok against the global library; true when the signature may draw in
// full. A person missing from the library fails; a record without a code needs no approval.
bool EvaluateSignAuth(TV_Sign_Class& entity);
// Days of validity left, the last day counting as one; 0 without a good code or outside the period.
int SignDaysLeft(const TV_Sign_Class& entity);
int SignDaysLeft(const TV_Sign_Class& entity, std::int32_t today);
// True when a signature of the drawing is not authorised for plotting.
bool AnyUnapprovedSign();

// Every signature of the drawing, each person once in order of first sight with the name the
// entity holds and the fewest days left of its signatures. False when the drawing has none.
bool CollectSigns(ObjectIdArray& ids, std::vector<std::int32_t>& persons, std::vector<std::string>& names,
                  std::vector<int>& days);

// The persons of the drawing whose library records ask for a code, in the order the approval form
// lists them (by name): row n of the form is entry n - 1.
std::vector<std::int32_t> PersonsNeedingApproval();

// The approval command: the list form "签名授权", codes checked, dates written into the entities.
void SignAuthorisationCommand();

}  // namespace tv::signing
