// What libxml2 and libxslt would print.
#pragma once

#include <string>

namespace MSXML2::libxml {

// For the libraries' hooks. The first collects in `text`, a std::string, up to some thousand characters: each
// further message only tells what the first ones led to.
void CollectMessage(void* text, const char* format, ...) __attribute__((format(printf, 2, 3)));
void IgnoreMessage(void*, const char*, ...);

// What was collected, without the line break at its end; `otherwise` where that is nothing.
std::string Collected(const std::string& text, const char* otherwise);

}  // namespace MSXML2::libxml
