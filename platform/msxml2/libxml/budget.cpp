#include "platform/msxml2/libxml/budget.hpp"

#include <libxml/globals.h>
#include <libxml/xmlmemory.h>
#include <malloc.h>

#include <cstdlib>
#include <cstring>
#include <mutex>
#include <utility>

#include "platform/msxml2/libxml/messages.hpp"

namespace MSXML2::libxml {
namespace {

thread_local Budget* spending = nullptr;

void* Allocate(std::size_t size) {
  Budget* const budget = spending;
  if (budget == nullptr) return std::malloc(size);
  if (!budget->Allow(size)) return nullptr;
  void* const memory = std::malloc(size);
  budget->Took(malloc_usable_size(memory));
  return memory;
}

void* Reallocate(void* memory, std::size_t size) {
  Budget* const budget = spending;
  if (budget == nullptr) return std::realloc(memory, size);
  const std::size_t before = malloc_usable_size(memory);
  if (size > before && !budget->Allow(size - before)) return nullptr;
  void* const moved = std::realloc(memory, size);
  if (moved == nullptr) return nullptr;
  budget->Returned(before);
  budget->Took(malloc_usable_size(moved));
  return moved;
}

void Free(void* memory) {
  if (Budget* const budget = spending; budget != nullptr) budget->Returned(malloc_usable_size(memory));
  std::free(memory);
}

char* Duplicate(const char* text) {
  const std::size_t size = std::strlen(text) + 1;
  void* const copy = Allocate(size);
  return copy == nullptr ? nullptr : static_cast<char*>(std::memcpy(copy, text, size));
}

}  // namespace

void WatchAllocations() {
  static std::once_flag once;
  std::call_once(once, [] { xmlMemSetup(&Free, &Allocate, &Reallocate, &Duplicate); });
}

Budget::Budget(const Limits& limits, xsltTransformContext& context)
    : limits_(limits),
      context_(context),
      end_(std::chrono::steady_clock::now() + limits.time),
      outer_(std::exchange(spending, this)),
      errors_(xmlGenericError),
      errorsContext_(xmlGenericErrorContext) {
  // The library would print that it has run out of memory; what went wrong is raised.
  xmlSetGenericErrorFunc(nullptr, &IgnoreMessage);
}

Budget::~Budget() {
  spending = outer_;
  xmlSetGenericErrorFunc(errorsContext_, errors_);
}

bool Budget::AllowWithALook(std::size_t bytes) {
  const bool within = IsWithin(bytes);
  if (!within) {
    Stop("The style sheet was stopped: it took more than " + std::to_string(limits_.memory >> 20U) +
         " MiB of memory.");
  }
  if (std::chrono::steady_clock::now() >= end_) {
    Stop("The style sheet was stopped: it ran for more than " +
         std::to_string(std::chrono::duration_cast<std::chrono::seconds>(limits_.time).count()) +
         " seconds.");
  }
  return within || bytes < kLarge;
}

void Budget::Stop(std::string why) {
  if (!exceeded_.empty()) return;
  exceeded_ = std::move(why);
  context_.state = XSLT_STATE_STOPPED;
  context_.opLimit = 1;
  if (context_.xpathCtxt != nullptr) context_.xpathCtxt->opLimit = 1;
}

}  // namespace MSXML2::libxml
