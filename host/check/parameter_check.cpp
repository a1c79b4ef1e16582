#include "host/check/parameter_check.hpp"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <utility>

#include "components/registration/register_jobs.hpp"
#include "host/near_name.hpp"
#include "platform/adodb/recordset.hpp"
#include "platform/automation/error.hpp"
#include "platform/automation/runtime.hpp"

namespace orvane::host {
namespace {

using namespace OrvaneProcess;

constexpr std::string_view kNames[] = {"MAXDORMANCYTIME",
                                       "KeepTemporaryFiles",
                                       "FTPPath",
                                       "Webfarm Implemented",
                                       "DataFileRelativePath",
                                       "ArchiveAfter",
                                       "BackOfficeApplication",
                                       "Reminder_Time",
                                       "Conclusion_Time",
                                       "ERP02_Activity",
                                       "ERP03_Problem",
                                       "ERP04_Solution",
                                       "CallCreator"};

std::string Row(std::string_view name) {
  return "PARAMETERS, row \"" + std::string(name) + "\"";
}

class ParameterCheck {
 public:
  ParameterCheck(const Parameters& parameters, Findings& findings)
      : parameters_(parameters), findings_(findings) {}

  void CheckNames() {
    for (const auto& [name, value] : parameters_) {
      if (const auto near = NearName(name, kNames)) {
        findings_.Fail("parameter.name", Row(name), "is read by no job",
                       "if \"" + std::string(*near) + "\" is meant, write it so");
      }
    }
    for (const std::string_view name : kNames) {
      if (parameters_.count(std::string(name)) > 1) {
        findings_.Fail("parameter.twice", Row(name), "stands there more than once", "leave one row");
      }
    }
  }

  void CheckDormant() {
    // A row that is missing or no number ends the job without its stop line.
    if (const auto days = Number("MAXDORMANCYTIME", "days")) {
      if (*days <= 0) {
        findings_.Warn(
            "parameter.everybody", Row("MAXDORMANCYTIME"),
            "is " + std::to_string(*days) +
                ": every customer without an open question is deleted, whenever the last visit was",
            "set it to the days that a customer may stay away, such as 730");
      } else if (*days < 7) {
        findings_.Warn(
            "parameter.short", Row("MAXDORMANCYTIME"),
            "is " + std::to_string(*days) + ": customers are deleted within a week of their last visit",
            "it counts days; set it to more if that is not meant");
      }
    }
  }

  void CheckCleanUp() {
    CheckDataFolder("the sweeps work in the installation directory itself");
    CheckWebFarm();
    if (!Has("KeepTemporaryFiles")) {
      findings_.Warn("parameter.missing", Row("KeepTemporaryFiles"),
                     "is missing and counts as 0 hours: every attachment that a row tells of is deleted",
                     "add it with the hours to keep files for");
      return;
    }
    const auto hours = Number("KeepTemporaryFiles", "hours");
    constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max() / 60;
    if (!hours) return;
    if (*hours > kMost) {
      findings_.Fail("parameter.range", Row("KeepTemporaryFiles"),
                     "is " + std::to_string(*hours) + ", which ends the job",
                     "it counts hours, and may be " + std::to_string(kMost) + " at most");
    } else if (*hours <= 0) {
      findings_.Warn(
          "parameter.everybody", Row("KeepTemporaryFiles"),
          "is " + std::to_string(*hours) +
              ": every attachment that a row tells of is deleted, and every question that was never "
              "submitted, from the moment that they are there",
          "set it to the hours to keep them for, such as 8760");
    }
  }

  void CheckArchive() {
    CheckDataFolder("the archive lies in the installation directory itself");
    CheckWebFarm();
    if (const auto days = Number("ArchiveAfter", "days"); days && *days <= 0) {
      findings_.Warn("parameter.everybody", Row("ArchiveAfter"),
                     "is " + std::to_string(*days) +
                         ": every closed request is archived and its rows deleted" +
                         (*days < 0 ? ", also those that end in the future" : ""),
                     "set it to the days after closing, such as 365");
    }
  }

  void CheckSolve() {
    CheckDataFolder("mail pages are made in the installation directory itself");
    const auto reminder = Number("Reminder_Time", "hours");
    const auto conclusion = Number("Conclusion_Time", "hours");
    if (reminder && conclusion && *conclusion <= *reminder) {
      findings_.Warn("parameter.order", Row("Conclusion_Time"),
                     "is " + std::to_string(*conclusion) + ", not more than Reminder_Time, " +
                         std::to_string(*reminder) +
                         ": a question is concluded by the run after the one that reminds its customer",
                     "set it to the hours after which a question is concluded, counted as Reminder_Time is");
    }
    const auto backOffice = Number("BackOfficeApplication", "0, 3 or 8");
    if (!backOffice || *backOffice == 0) return;
    if (*backOffice != 3 && *backOffice != 8) {
      findings_.Warn(
          "parameter.back-office", Row("BackOfficeApplication"),
          "is " + std::to_string(*backOffice) + ": no status reaches an ERP, each try is logged as an error",
          "set it to 3 or 8, or to 0 without an ERP");
      return;
    }
    for (const std::string_view name : {"ERP02_Activity", "ERP03_Problem", "ERP04_Solution", "CallCreator"}) {
      if (ValueOf(parameters_, name).empty()) {
        findings_.Warn("parameter.erp", Row(name), "is empty: calls reach the ERP without it",
                       "set it as the ERP expects it");
      }
    }
  }

 private:
  bool Has(std::string_view name) const { return parameters_.count(std::string(name)) > 0; }

  // A number that a job cannot do without.
  std::optional<std::int32_t> Number(std::string_view name, const std::string& unit) {
    if (!Has(name)) {
      findings_.Fail("parameter.missing", Row(name), "is missing", "add it; its value counts " + unit);
      return std::nullopt;
    }
    const std::string value = ValueOf(parameters_, name);
    try {
      return automation::ToInt32(value);
    } catch (const automation::Error& error) {
      findings_.Fail("parameter.number", Row(name), "is \"" + value + "\": " + error.Description(),
                     "set it to a whole number; it counts " + unit);
      return std::nullopt;
    }
  }

  void CheckDataFolder(const std::string& consequence) {
    if (toldDataFolder_ || !ValueOf(parameters_, "DataFileRelativePath").empty()) return;
    toldDataFolder_ = true;
    findings_.Warn("parameter.data-folder", Row("DataFileRelativePath"),
                   "is missing or empty: " + consequence,
                   "set it to the data folder, relative to the installation, such as Data");
  }

  void CheckWebFarm() {
    if (std::exchange(toldWebFarm_, true)) return;
    const std::string value = ValueOf(parameters_, "Webfarm Implemented");
    try {
      if (value.empty() || !automation::ToBoolean(value)) return;
    } catch (const automation::Error& error) {
      findings_.Fail("parameter.web-farm", Row("Webfarm Implemented"),
                     "is \"" + value + "\": " + error.Description(), "set it to True or False");
      return;
    }
    if (ValueOf(parameters_, "FTPPath").find_first_not_of(' ') == std::string::npos) {
      findings_.Fail("parameter.shared-place", Row("FTPPath"), "is empty on a web farm",
                     "name the place that its servers share");
    }
  }

  const Parameters& parameters_;
  Findings& findings_;
  bool toldDataFolder_ = false;
  bool toldWebFarm_ = false;
};

}  // namespace

Parameters ReadParameters(const ADODB::ConnectionPtr& connection) {
  Parameters parameters;
  const auto rows = automation::CreateObject<ADODB::Recordset>("ADODB.Recordset");
  rows->Open("SELECT PARAM_NAME, PARAM_VALUE FROM PARAMETERS", connection, ADODB::CursorType::ForwardOnly,
             ADODB::LockType::ReadOnly, ADODB::kCommandText);
  for (; !rows->Eof(); rows->MoveNext()) {
    parameters.emplace(automation::ToTextOrEmpty(rows->Value("PARAM_NAME")),
                       automation::ToTextOrEmpty(rows->Value("PARAM_VALUE")));
  }
  rows->Close();
  return parameters;
}

std::string ValueOf(const Parameters& parameters, std::string_view name) {
  const auto found = parameters.lower_bound(std::string(name));
  return found == parameters.end() || found->first != name ? std::string() : found->second;
}

bool IsWebFarm(const Parameters& parameters) {
  try {
    const std::string value = ValueOf(parameters, "Webfarm Implemented");
    return !value.empty() && automation::ToBoolean(value);
  } catch (const automation::Error&) {
    return false;
  }
}

void CheckParameters(const Parameters& parameters, std::span<const std::string_view> progIds,
                     Findings& findings) {
  ParameterCheck check(parameters, findings);
  const auto runs = [progIds](std::string_view progId) {
    return std::find(progIds.begin(), progIds.end(), progId) != progIds.end();
  };
  check.CheckNames();
  if (runs(kArchiveProgId)) check.CheckArchive();
  if (runs(kCleanUpProgId)) check.CheckCleanUp();
  if (runs(kDormantUserExpiryProgId)) check.CheckDormant();
  if (runs(kSolveOnNoResponseProgId)) check.CheckSolve();
}

}  // namespace orvane::host
