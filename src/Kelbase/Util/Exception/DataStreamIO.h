#pragma once

#include <Kelbase/common/common_exception_base.h>

namespace Util::Exception {

/// A failed read from a byte stream.
class DataStreamIO : public ::Exception::Base {
public:
    explicit DataStreamIO(const String& message);
    DataStreamIO(const DataStreamIO&) = default;
    DataStreamIO& operator=(const DataStreamIO&) = default;
    ~DataStreamIO() override;

    String ToString() const override;
};

} // namespace Util::Exception
