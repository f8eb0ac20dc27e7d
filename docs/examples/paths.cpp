// Builds the path of a preset's backup. The program does not access the disk.
#include <Kelbase/common/common_path.h>

#include <cstdio>

static void Show(const char* what, const String& text) { std::printf("%-10s %s\n", what, text.Latin1()); }

int main() {
    const FilePath preset("/Users/Ada//Presets\\..\\Presets/Warm.Room.fxp", false);
    Show("given", preset.GetInternal());
    Show("clean", preset.ToString());
    Show("name", preset.GetFilename());
    Show("base", preset.GetBaseName());
    Show("extension", preset.GetExtension());

    const FolderPath folder = preset.GetFolder();
    Show("folder", folder.ToString());
    Show("parent", folder.GetParent().ToString());
    Show("backup", (folder + (preset.GetBaseName() + ".bak")).ToString());

    // Comparisons ignore the case of ASCII letters, as the Mac's own volumes do.
    const bool same = preset == FilePath("/users/ada/PRESETS/warm.room.FXP", false);
    std::printf("%-10s %s\n", "same file", same ? "yes" : "no");

    // Of two ".." in a row only the first removes a name.
    Show("two ..", FilePath("/a/b/../../c", false).ToString());
}
