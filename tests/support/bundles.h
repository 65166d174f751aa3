#pragma once
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/utsname.h>

/** Real bundles on disk, of the modules in tests/modules. */
class TestBundle {
public:
    /** Text says what is in it, see there. */
    TestBundle(const std::filesystem::path& folder, const std::string& name, const std::string& text,
               const std::string& module = "testmodule", const std::string& version = "1.0")
        : path(folder / (name + ".bundle")) {
        namespace fs = std::filesystem;
        utsname system = {};
        uname(&system);
        object = path / "Contents" / (std::string(system.machine) + "-linux") / (name + ".so");
        fs::create_directories(object.parent_path());
        fs::create_directories(path / "Contents/Resources");
        fs::remove(object);  // never written over: it may be loaded
        fs::copy_file(built(module), object);
        setText(text);
        setVersion(version);
    }
    /** For the next time that it is entered. */
    void setText(const std::string& text) const { std::ofstream(path / "Contents/Resources/module.txt") << text; }
    /** The date stays, so that only the text says that it is another one. */
    void setVersion(const std::string& version) const {
        const std::filesystem::path list = path / "Contents/Info.plist";
        std::error_code none;
        const auto date = std::filesystem::last_write_time(list, none);
        std::ofstream(list) << "<plist><dict>\n<key>CFBundleVersion</key>\n\t<string>" << version
                            << "</string>\n</dict></plist>\n";
        if (!none)
            std::filesystem::last_write_time(list, date);
    }
    /** How often it was entered so far. */
    int loads() const {
        std::ifstream text(path / "Contents/Resources/loads");
        int count = 0;
        for (std::string line; std::getline(text, line);)
            ++count;
        return count;
    }
    static std::filesystem::path built(const std::string& module) {
        const char* build = std::getenv("TALV_BUILD_DIR");
        const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe");
        return (build ? std::filesystem::path(build) : program.parent_path().parent_path()) / "tests" /
               (module + ".so");
    }

    std::filesystem::path path, object;
};

/** A class in the text of a module: the number makes its identifier. */
inline std::string classLine(int number, const std::string& category, const std::string& name) {
    char digits[33];
    std::snprintf(digits, sizeof(digits), "A0B1C2D3E4F5061728394A5B%08X", number);
    return std::string("class ") + digits + " 2 " + category + " " + name + "\n";
}
