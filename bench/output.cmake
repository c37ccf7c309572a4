tavrel_bench(output image_file LIVE bare SCREEN 1920x1080 USES output settings QT Gui)
