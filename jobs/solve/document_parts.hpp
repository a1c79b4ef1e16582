// Parts of the mail document that a builder takes for granted.
#pragma once

#include "platform/automation/error.hpp"
#include "platform/msxml2/dom_document.hpp"

namespace OrvaneProcess {

// The object itself; 91 for a null reference.
template <class Pointer>
const Pointer& Require(const Pointer& object) {
  if (!object) throw automation::Error(automation::ErrorNumber::ObjectNotSet);
  return object;
}

inline MSXML2::NodePtr Root(const MSXML2::DOMDocumentPtr& document) {
  return Require(Require(document)->documentElement());
}

}  // namespace OrvaneProcess
