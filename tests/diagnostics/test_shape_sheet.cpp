#include "annotate/selection_renderer.h"
#include "annotate/shape_document.h"
#include "diagnostics/shape_sheet.h"
#include "support/test_main.h"

#include <QGuiApplication>

using namespace tavrel;

class ShapeSheetTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyShapeComesBackAsItWas_data()
    {
        QTest::addColumn<QString>("shapes");
        for (const SheetCell &cell : sheetCells())
            QTest::newRow(qPrintable(cell.name)) << cell.shapes;
    }

    /// Drawn, saved, reopened, drawn: the same pixels, and there are some.
    void everyShapeComesBackAsItWas()
    {
        QFETCH(QString, shapes);
        ShapeDocument document;
        document.loadState(shapes, QStringLiteral("{}"), {}, 0);
        QVERIFY(!document.shapes().isEmpty());
        const QString saved = document.shapesJson();
        ShapeDocument reopened;
        reopened.loadState(saved, document.countersJson(), document.undoStack(), document.undoIndex());
        QCOMPARE(reopened.shapesJson(), saved);
        const QRectF whole(QPointF(0, 0), QSizeF(sheetCellSize()));
        for (const double ratio : {1.0, 2.0}) {
            const QImage ground = sheetGround(ratio > 1, ratio);
            const QImage drawn = renderSelection(ground, whole, shapes, ShapeFactory::standard());
            QVERIFY(drawn != ground);
            QCOMPARE(renderSelection(ground, whole, reopened.shapesJson(), ShapeFactory::standard()), drawn);
        }
    }
};

TAVREL_TEST_MAIN(QGuiApplication, ShapeSheetTest)
#include "test_shape_sheet.moc"
