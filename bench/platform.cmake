tavrel_bench(platform global_hotkey LIVE bare SCREEN 1920x1080 USES platform/linux QT Gui)
