# What Doxygen reads: the headers that are installed, and nothing else.
get_target_property(publicHeaders JobParser HEADER_SET)
list(JOIN publicHeaders " \\\n    " publicHeaders)
configure_file(cmake/Doxyfile.in ${PROJECT_BINARY_DIR}/Doxyfile @ONLY)
