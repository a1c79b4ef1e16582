// The classes behind the components, for their registration.
#pragma once

#include <filesystem>
#include <memory>

#include "components/interfaces/service_request.hpp"

namespace OrvServiceRequest {

std::shared_ptr<Question> MakeQuestion();
std::shared_ptr<Prospect> MakeProspect();
std::shared_ptr<ProspectState> MakeProspectState(const std::filesystem::path& outboxFile);
std::shared_ptr<QuestionState> MakeQuestionState(const std::filesystem::path& outboxFile);

}  // namespace OrvServiceRequest
