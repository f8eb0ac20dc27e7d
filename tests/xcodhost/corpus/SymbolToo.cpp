extern "C" [[gnu::visibility("default")]] int korvane_version;
int korvane_version = 173;
