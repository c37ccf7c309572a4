tavrel_bench(edit image_file LIVE bare SCREEN 1920x1080 USES edit settings QT Gui)
