// The stored layout of the toolbar.
#include "ui/toolbar_layout.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    using namespace tavrel::ui;
    const ToolbarLayout layout = wholeToolbarLayout(
        parseToolbarLayout(QString::fromUtf8(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size))));
    if (layout.size() != defaultToolbarLayout().size())
        std::abort(); // every tool is there once, whatever the text says
    return 0;
}
