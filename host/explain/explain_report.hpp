// An explanation for people, and for programs.
#pragma once

#include <string>
#include <string_view>

#include "host/explain/explanation.hpp"
#include "run/preview_run.hpp"

namespace orvane::host {

std::string ExplanationText(const Explanation& explanation, const PreviewedJob& previewed);

// One object a line: the job, its parameters, the subject's rows and files, the effects as the run's journal
// would have them (`run` is its name), what was logged, and the end.
std::string ExplanationJson(const Explanation& explanation, const PreviewedJob& previewed,
                            std::string_view run);

}  // namespace orvane::host
