// Lists of model records in protobuf messages.
#pragma once

#include <google/protobuf/repeated_field.h>

namespace qx::detail {

/// Appends the message of each item of `list` to `field`.
template <typename List, typename Message>
void listToProtobuf(const List& list, google::protobuf::RepeatedPtrField<Message>* field) {
  field->Reserve(field->size() + static_cast<int>(list.size()));
  for (const auto& item : list) field->AddAllocated(item.toProtobuf());
}

/// Replaces `list` by one item for each message of `field`, a copy of `blank` that then reads the message. True if any
/// of them reported a failure; one that throws leaves the list with itself as the last item.
template <typename List, typename Message>
bool listFromProtobuf(List& list, const typename List::value_type& blank,
                      const google::protobuf::RepeatedPtrField<Message>& field) {
  list.clear();
  bool failed = false;
  for (const Message& message : field) {
    list.push_back(blank);
    failed |= list.back().fromProtobuf(message);
  }
  return failed;
}

}  // namespace qx::detail
