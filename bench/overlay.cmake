tavrel_bench(overlay paint USES overlay_ui QT Widgets)
