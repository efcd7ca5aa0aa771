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

/// Replaces `list` by as many copies of `blank` as `field` has messages, and reads one message into each. True if any
/// of them reported a failure. One that throws leaves blanks behind it.
template <typename List, typename Message>
bool listFromProtobuf(List& list, const typename List::value_type& blank,
                      const google::protobuf::RepeatedPtrField<Message>& field) {
  list.assign(static_cast<typename List::size_type>(field.size()), blank);
  bool failed = false;
  auto message = field.begin();
  for (auto& item : list) failed |= item.fromProtobuf(*message++);
  return failed;
}

/// The same one by one: an item that throws is the last of the list.
template <typename List, typename Message>
bool listFromProtobufOneByOne(List& list, const typename List::value_type& blank,
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
