#pragma once

#include <Kelbase/common/common_exception_base.h>

namespace Util::Exception {

/// A failed read from a byte stream.
class DataStreamIO : public ::Exception::Base {
public:
    /// `message` says what was to be read and how much there was.
    explicit DataStreamIO(const String& message);
    ///@{
    /// Shares the texts of the other one.
    DataStreamIO(const DataStreamIO&) = default;
    DataStreamIO& operator=(const DataStreamIO&) = default;
    ///@}
    ~DataStreamIO() override;

    String ToString() const override;
};

} // namespace Util::Exception
