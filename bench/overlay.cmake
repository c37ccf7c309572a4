tavrel_bench(overlay paint USES overlay_ui QT Widgets)
tavrel_bench(overlay hover USES overlay_ui QT Widgets)
tavrel_bench(overlay attributes USES overlay_ui QT Widgets)
tavrel_bench(overlay stitch USES overlay QT Gui)
