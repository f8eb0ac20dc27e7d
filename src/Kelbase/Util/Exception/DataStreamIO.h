#pragma once

#include <Kelbase/common/common_exception_base.h>

namespace Util::Exception {

/// A failed read from a byte stream.
class DataStreamIO : public ::Exception::Base {
public:
    /// `message` says what could not be read.
    explicit DataStreamIO(const String& message);
    ///@{
    /// Shares the texts of the other object.
    DataStreamIO(const DataStreamIO&) = default;
    DataStreamIO& operator=(const DataStreamIO&) = default;
    ///@}
    ~DataStreamIO() override;

    /// Returns the text of the base class, followed by a line with the name of this class.
    String ToString() const override;
};

} // namespace Util::Exception
