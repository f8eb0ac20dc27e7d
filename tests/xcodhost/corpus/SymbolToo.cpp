extern "C" [[gnu::visibility("default")]] int gKorvaneVersion;
int gKorvaneVersion = 173;
