# Writes the default scenario into a C++ source as a raw string literal, so
# that the program carries it without reading any file at run time.
file(READ "${INPUT}" text)
file(WRITE "${OUTPUT}.tmp"
  "// Generated from default-scenario.json at build time; edit that file.\n"
  "#include \"sim/Scenario.h\"\n\n"
  "const std::string& tessarine::sim::Scenario::defaultText() {\n"
  "    static const std::string text = R\"scenario(${text})scenario\";\n"
  "    return text;\n"
  "}\n")
file(COPY_FILE "${OUTPUT}.tmp" "${OUTPUT}" ONLY_IF_DIFFERENT)
file(REMOVE "${OUTPUT}.tmp")
