// What another process may write to the local socket.
#include "process/single_instance.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    using tavrel::HandOver;
    const HandOver request =
        HandOver::fromLine(QByteArray(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size)));
    const HandOver again = HandOver::fromLine(request.toLine());
    if (again.files != request.files || again.cwd != request.cwd || again.commands != request.commands)
        std::abort(); // what was understood is passed on unchanged
    return 0;
}
