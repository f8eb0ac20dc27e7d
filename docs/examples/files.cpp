// Writes two files, lists their folder, and reports a failed read.
#include <Kelbase/Util/Dir.h>
#include <Kelbase/Util/Exception/FileIO.h>
#include <Kelbase/Util/File.h>

#include <cstdio>
#include <vector>

static void writeText(const FilePath& path, const String& text) {
    Util::File file(path);
    file.Open(Util::File::Write); // creates the file or empties it
    file.WriteBlock(text.Latin1(), text.GetLength());
    file.Close(); // unlike the destructor, Close reports a full disk
}

static String readText(const FilePath& path) {
    Util::File file(path);
    file.Open(Util::File::Read);
    std::vector<char> bytes(static_cast<unsigned int>(file.Size()));
    file.ReadBlock(bytes.data(), static_cast<unsigned int>(bytes.size()));
    return String(bytes.data(), static_cast<unsigned int>(bytes.size()));
}

int main() {
    const FolderPath folder("presets.example/Old", false); // in the working directory
    Util::Dir(folder).Create(true);
    writeText(folder + "draft.txt", "one");
    writeText(folder + "Notes.txt", "two words");
    Util::File::Rename(folder + "draft.txt", folder + "notes-2.txt");

    std::vector<String> names;
    Util::Dir(folder).GetFilenames(names, "notes*.txt", false, false);
    for (const String& name : names)
        std::printf("%s: %s\n", name.Latin1(), readText(folder + name).Latin1());

    try {
        readText(folder + "missing.txt");
    } catch (const Util::Exception::FileIO& failure) {
        const String name = failure.GetFilePath().GetFilename();
        std::printf("%s: %s (%s, errno %d)\n", name.Latin1(), failure.GetMessageText().Latin1(),
                    failure.GetErrorDescription().Latin1(), failure.GetErrorNumber());
    }

    for (const String& name : names) Util::File(folder + name).Remove(true);
    Util::Dir(folder).Remove();
    Util::Dir(folder.GetParent()).Remove();
}
