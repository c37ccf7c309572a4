// The shapes of a stored capture: read, painted, written and read again.
#include "annotate/shape_document.h"

#include <QGuiApplication>
#include <QImage>
#include <QPainter>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static QGuiApplication app(*argc, *argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    using namespace tavrel;
    ShapeDocument document;
    document.loadState(QString::fromUtf8(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size)),
                       QStringLiteral("{}"), {}, 0);
    static QImage canvas(64, 64, QImage::Format_ARGB32_Premultiplied);
    canvas.fill(Qt::white);
    QPainter painter(&canvas);
    ShapeRenderContext context;
    context.canvasBounds = QRectF(0, 0, 64, 64);
    document.paint(painter, context);
    painter.end();
    const QString written = document.shapesJson();
    ShapeDocument again;
    again.loadState(written, document.countersJson(), {}, 0);
    if (again.shapes().size() != document.shapes().size())
        std::abort(); // what was read can be written
    return 0;
}
