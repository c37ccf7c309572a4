tavrel_bench(ui color_board USES ui_widgets QT Widgets)
