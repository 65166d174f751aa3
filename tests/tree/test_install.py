"""What is installed can be used: the programs run from there, and another project builds on the framework."""
import os
import pathlib
import subprocess
import tempfile
import unittest

BUILD = os.environ.get("TALV_BUILD_DIR", "")
CMAKE = """
cmake_minimum_required(VERSION 3.25)
project(Consumer CXX)
find_package(Tessarine REQUIRED COMPONENTS graphics openssl)
add_executable(consumer main.cpp)
target_link_libraries(consumer PRIVATE Tessarine::graphics Tessarine::openssl)
"""
MAIN = """
#include "base/fmessage.h"
#include "base/source/classfactory.h"
#include "graphics/platformgraphics.h"
#include "gui/drawing/bitmappixelaccessor.h"
#include "gui/drawing/ubitmap.h"
#include "gui/drawing/uoffscreen.h"
#include "gui/os/linux/core/platformcore.h"
#include "network/openssl/securenetwork.h"
#include "pluginglue/uplugapp.h"
static bool draws() {
    using namespace Tessarine;
    installTessarinePlatformGraphics();
    const OPtr<UBitmap> bitmap(new UBitmap({8, 8}, 32));
    const OPtr<UOffscreen> device(new UOffscreen(bitmap));
    device->setBrush(UBrush(UColor(0xFFFF0000U)));
    device->paintRect({2, 2, 6, 6});
    const BitmapPixelAccessor pixels(bitmap->getBitmap(), Graphics::kLockRead);
    return pixels.isValid() && pixels.row(4)[4] == 0xFFFF0000 && pixels.row(0)[0] == 0;
}
int main() {
    Tessarine::installTessarinePlatformCore();
    auto* application = new Tessarine::UPluginApplication("consumer");
    const bool started = application->initPlugin();
    const bool drawn = draws() && Tessarine::ClassFactory::instance(true)->getMetaClassByName("UFilmStrip");
    const bool known = Tessarine::ClassFactory::instance(true)->getMetaClassByName("UStringListValue");
    const bool secure = Tessarine::installTessarineSecureNetwork();
    application->release();
    return started && drawn && known && secure ? 0 : 1;
}
"""


def run(*command, **options):
    result = subprocess.run([str(word) for word in command], check=False, capture_output=True, text=True, **options)
    assert result.returncode == 0, f"{command}:\n{result.stdout}{result.stderr}"
    return result.stdout


@unittest.skipIf(os.environ.get("TALV_SANITIZE"), "the plain build is what is installed")
class Install(unittest.TestCase):
    def test_programs_and_package_work_from_the_prefix(self):
        with tempfile.TemporaryDirectory() as name:
            folder = pathlib.Path(name)
            run("cmake", "--install", BUILD, "--prefix", folder / "prefix")
            self.assertIn("Usage", run(folder / "prefix/bin/talv-host", "--help"))
            out = run(folder / "prefix/bin/talv-host", "--console", "--user-folder", folder / "user", "--serial-dir",
                      f"{folder}/", input="factory\nquit\n")
            self.assertIn('"reply":1,"ok":true', out)
            [skin] = (folder / "prefix").rglob("TALV.srf")
            run(folder / "prefix/bin/srfpack", "verify", skin)
            source = folder / "consumer"
            source.mkdir()
            (source / "CMakeLists.txt").write_text(CMAKE)
            (source / "main.cpp").write_text(MAIN)
            run("cmake", "-S", source, "-B", folder / "b", "-G", "Ninja", "-DCMAKE_CXX_COMPILER=g++",
                f"-DCMAKE_PREFIX_PATH={folder / 'prefix'}")
            run("cmake", "--build", folder / "b")
            run(folder / "b/consumer")


if __name__ == "__main__":
    unittest.main()
