#pragma once

#include "annotate/tool_type.h"

#include <QByteArray>
#include <QJsonObject>
#include <QMap>

#include <functional>
#include <memory>

namespace tavrel {

class BaseShape;
struct ShapeAttributes;

/// Knows how each kind of shape is made, for drawing and for reading.
///
/// A kind with several classes decides in `forStored` by the stored object and in `forTool` by the attributes.
class ShapeFactory final
{
public:
    using ForTool = std::function<std::shared_ptr<BaseShape>(const ShapeAttributes &)>;
    using ForStored = std::function<std::shared_ptr<BaseShape>(const QJsonObject &)>;

    void add(ToolType type, ForTool forTool, ForStored forStored);
    /// A kind with one class.
    template <typename Shape>
    void add(ToolType type)
    {
        add(
            type, [](const ShapeAttributes &) { return std::make_shared<Shape>(); },
            [](const QJsonObject &) { return std::make_shared<Shape>(); });
    }

    [[nodiscard]] bool knows(ToolType type) const { return m_makers.contains(type); }
    /// A new shape for a tool with its attributes taken; null for a tool that makes none.
    [[nodiscard]] std::shared_ptr<BaseShape> create(ToolType tool, const ShapeAttributes &attributes) const;
    /// The shape of a stored object; null for an unknown type.
    [[nodiscard]] std::shared_ptr<BaseShape> read(const QJsonObject &object) const;
    /// The shape of a stored object's text; null as above and for malformed text. The quick way for long strokes.
    [[nodiscard]] std::shared_ptr<BaseShape> read(const QByteArray &json) const;

    /// The factory of this program, with every class that it has.
    [[nodiscard]] static const ShapeFactory &standard();

private:
    struct Maker
    {
        ForTool forTool;
        ForStored forStored;
    };
    QMap<ToolType, Maker> m_makers;
};

} // namespace tavrel
