#pragma once

#include "annotate/shape_attributes.h"
#include "annotate/tool_type.h"

#include <QMap>

#include <optional>

namespace tavrel {

class ShapeDocument;

/// What each tool was last set to: a highlighter stays yellow and thick while the arrow stays red and thin. Tools of
/// one family (rectangle and ellipse, line and arrow) share what they were set to. The rest of the attributes belongs
/// to one kind of tool anyway and is carried on as it is.
///
/// A plain value that outlives the documents it serves. GUI thread only.
class ToolMemory final
{
public:
    /// Takes down how a document's present tool is set.
    void remember(const ShapeDocument &document);
    /// Sets the document's present tool as it was; the first time it goes on with what the document has.
    void recall(ShapeDocument &document) const;
    /// Sets a new document, in which nothing is drawn yet, like the one remembered last. A watermark is not carried
    /// over: it would stand on the next picture unasked.
    void begin(ShapeDocument &document) const;

private:
    struct Look
    {
        QString color;
        double thickness = 0;
        double fontSize = 0;
        QString fontFamily;
    };

    QMap<ToolType, Look> m_looks; ///< by family head
    std::optional<ShapeAttributes> m_last;
};

} // namespace tavrel
