// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <utility>

namespace vistels {

// A record as a value that costs a pointer to copy: the record behind it is shared and never changes. Made of
// a record without further ado.
template <class Record>
class shared_record {
  public:
    shared_record() : record_(std::make_shared<const Record>()) {}
    shared_record(Record record) : record_(std::make_shared<const Record>(std::move(record))) {}
    shared_record(std::shared_ptr<const Record> record) : record_(std::move(record)) {}  // not null

    const Record& operator*() const { return *record_; }
    const Record* operator->() const { return record_.get(); }
    const std::shared_ptr<const Record>& pointer() const { return record_; }

  private:
    std::shared_ptr<const Record> record_;
};

}  // namespace vistels
