// Builds the path of a preset's backup. The program does not access the disk.
#include <Kelbase/common/common_path.h>

#include <cstdio>

static void show(const char* what, const String& text) {
    std::printf("%-10s %s\n", what, text.Latin1());
}

int main() {
    const FilePath preset("/Users/Ada//Presets\\..\\Presets/Warm.Hall.fxp", false);
    show("given", preset.GetInternal());
    show("clean", preset.ToString());
    show("name", preset.GetFilename());
    show("base", preset.GetBaseName());
    show("extension", preset.GetExtension());

    const FolderPath folder = preset.GetFolder();
    show("folder", folder.ToString());
    show("parent", folder.GetParent().ToString());
    show("backup", (folder + (preset.GetBaseName() + ".bak")).ToString());

    // Comparisons ignore the case of ASCII letters, as the Mac's own volumes do.
    const bool same = preset == FilePath("/users/ada/PRESETS/warm.hall.FXP", false);
    std::printf("%-10s %s\n", "same file", same ? "yes" : "no");

    // Of two ".." in a row only the first removes a name.
    show("two ..", FilePath("/a/b/../../c", false).ToString());
}
