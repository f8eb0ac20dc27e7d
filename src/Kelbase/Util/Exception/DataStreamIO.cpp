#include <Kelbase/Util/Exception/DataStreamIO.h>

namespace Util::Exception {

DataStreamIO::DataStreamIO(const String& text) : Base(text) {}

DataStreamIO::~DataStreamIO() = default;

String DataStreamIO::ToString() const { return Base::ToString() + "\nDataStreamIO\n"; }

} // namespace Util::Exception
