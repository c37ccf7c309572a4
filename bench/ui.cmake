tavrel_bench(ui color_board USES ui_widgets QT Widgets)
tavrel_bench(ui dialogs USES ui_widgets QT Widgets)
tavrel_bench(ui controls USES ui_widgets QT Widgets)
