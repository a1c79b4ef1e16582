// Calls a private member function, for what a class does not promise to its callers but to itself.
//
//   struct WriteJobLog {
//     using Member = void (CleanUp::*)(std::int16_t);
//     friend Member MemberOf(WriteJobLog);
//   };
//   template struct PrivateMember<WriteJobLog, &CleanUp::WriteJobLog>;
//   ...
//   (job.*MemberOf(WriteJobLog()))(3);
//
// An explicit instantiation may name a private member, and hands it on to the function that it defines.
#pragma once

namespace orvane_test {

template <class Tag, typename Tag::Member kMember>
struct PrivateMember {
  friend typename Tag::Member MemberOf(Tag) { return kMember; }
};

}  // namespace orvane_test
