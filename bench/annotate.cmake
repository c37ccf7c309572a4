tavrel_bench(annotate shape_document USES annotate QT Gui)
target_include_directories(bench_annotate_shape_document PRIVATE ${PROJECT_SOURCE_DIR}/tests)
tavrel_bench(annotate vector_shapes USES annotate QT Gui)
