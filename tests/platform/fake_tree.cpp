#include "platform/fake_tree.h"

#include <QRandomGenerator>

#include <functional>

namespace tavrel::test {

namespace {

using Tree = QList<FakeElement>;

int add(Tree &tree, int parent, const QRect &rect)
{
    const int index = static_cast<int>(tree.size());
    FakeElement element;
    element.rect = rect;
    element.name = QStringLiteral("element %1").arg(index);
    tree.append(element);
    tree[parent].children.append(index);
    return index;
}

void growGrid(Tree &tree)
{
    for (int y = 0; y < 40; ++y) {
        const int row = add(tree, 0, QRect(kFakeWindow.x(), kFakeWindow.y() + 22 * y, kFakeWindow.width(), 22));
        for (int x = 0; x < 49; ++x)
            add(tree, row, QRect(kFakeWindow.x() + 24 * x, kFakeWindow.y() + 22 * y, 24, 22));
    }
}

void growLevels(Tree &tree)
{
    int parent = 0;
    for (int level = 1; level <= 5; ++level) {
        const int next = add(tree, parent, kFakeWindow.adjusted(10 * level, 10 * level, -10 * level, -10 * level));
        for (int i = 1; i < 400; ++i)
            add(tree, parent, QRect(kFakeWindow.x() + 2 * i, kFakeWindow.y(), 2, 8));
        parent = next;
    }
}

void growCrowd(Tree &tree)
{
    for (int i = 0; i < 450; ++i)
        add(tree, 0, kFakeWindow.adjusted(2 * (i / 2), 2 * (i / 4), -2 * (i / 4), -2 * (i / 4)));
}

void growDeep(Tree &tree)
{
    int parent = 0;
    for (int level = 1; level < 40; ++level)
        parent = add(tree, parent, kFakeWindow.adjusted(10 * level, 2 * level, -4 * level, -2 * level));
}

void growRandom(Tree &tree, QRandomGenerator &random)
{
    const std::function<void(int, int)> grow = [&](int parent, int levels) {
        const int count = random.bounded(2, 12);
        const QRect room = tree[parent].rect.adjusted(-20, -20, 20, 20);
        for (int i = 0; i < count && tree.size() < 2000; ++i) {
            const auto within = [&random](int from, int length) {
                return from + 2 * random.bounded(0, std::max(1, length / 2));
            };
            QRect rect(within(room.x(), room.width()), within(room.y(), room.height()), 0, 0);
            rect.setSize({2 * random.bounded(0, std::max(1, room.width() / 2)),
                          2 * random.bounded(0, std::max(1, room.height() / 2))});
            if (random.bounded(4) == 0)
                rect = tree[parent].rect; // a page of a stack
            const int child = add(tree, parent, rect);
            const int state = random.bounded(6);
            tree[child].visible = state != 0;
            tree[child].showing = state > 1;
            if (levels > 1)
                grow(child, levels - 1);
        }
    };
    while (tree.size() < 1900)
        grow(0, 4);
}

void growRoles(Tree &tree)
{
    // Two letters outside the basic plane, so that a cut by number would go through the middle of one.
    const QString name = QString(79, u'n') + QStringLiteral("😀😀");
    const QString help = QString(119, u'h') + QStringLiteral("😀😀");
    for (int role = 0; role < kFakeRoles; ++role) {
        const int index = add(tree, 0, QRect(kFakeWindow.x() + 8 * role, kFakeWindow.y(), 8, 100));
        tree[index].role = static_cast<quint32>(role);
        tree[index].name = name;
        tree[index].help = help;
    }
}

void growPage(Tree &tree)
{
    constexpr quint32 kWebDocument = 95;
    const int bar = add(tree, 0, QRect(kFakeWindow.topLeft(), QSize(kFakeWindow.width(), 100)));
    tree[bar].role = kWebDocument; // without an address
    add(tree, 0, kFakeWindow.adjusted(0, 100, 0, 0));
    const int page = add(tree, 2, kFakeWindow.adjusted(0, 100, 0, 0));
    tree[page].role = kWebDocument;
    tree[page].help = QStringLiteral("https://example.org/page?ä=1");
    const int frame = add(tree, page, QRect(300, 300, 200, 200));
    tree[frame].role = kWebDocument;
    tree[frame].help = QStringLiteral("https://example.org/frame");
}

} // namespace

QList<FakeElement> fakeTree(const QByteArray &shape, quint32 seed)
{
    QRandomGenerator random(seed);
    Tree tree(1);
    tree[0].rect = kFakeWindow;
    tree[0].name = QStringLiteral("Zoo");
    tree[0].role = 23;
    if (shape == "grid")
        growGrid(tree);
    else if (shape == "levels")
        growLevels(tree);
    else if (shape == "crowd")
        growCrowd(tree);
    else if (shape == "deep")
        growDeep(tree);
    else if (shape == "random")
        growRandom(tree, random);
    else if (shape == "roles")
        growRoles(tree);
    else if (shape == "page")
        growPage(tree);
    return tree;
}

} // namespace tavrel::test
