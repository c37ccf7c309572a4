tavrel_bench(platform global_hotkey LIVE bare SCREEN 1920x1080 USES platform/linux QT Gui)
tavrel_bench(platform capture USES platform/linux QT Gui LIVE bare SCREEN 3840x2160)
