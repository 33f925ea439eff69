import os
import re

from conan import ConanFile
from conan.tools.build import check_min_cppstd
from conan.tools.cmake import CMake, CMakeDeps, CMakeToolchain, cmake_layout
from conan.tools.files import copy, load, rmdir


class OrvelAnalyticsConan(ConanFile):
    name = "orvel-analytics"
    description = "Client library of the local analytics service"
    package_type = "library"
    settings = "os", "arch", "compiler", "build_type"
    options = {"shared": [True, False], "fPIC": [True, False]}
    default_options = {"shared": True, "fPIC": True}

    @property
    def _sources(self):
        return os.path.join(self.recipe_folder, "..", "..")

    def set_version(self):
        project = load(self, os.path.join(self._sources, "CMakeLists.txt"))
        self.version = re.search(r"project\([^)]*?VERSION ([0-9.]+)", project).group(1)

    def export_sources(self):
        for pattern in ("CMakeLists.txt", "cmake/*", "include/*", "relay/*", "src/*", "testing/*"):
            copy(self, pattern, self._sources, self.export_sources_folder)

    def config_options(self):
        if self.settings.os == "Windows":
            del self.options.fPIC

    def configure(self):
        if self.options.shared:
            self.options.rm_safe("fPIC")

    def layout(self):
        cmake_layout(self)

    def requirements(self):
        if self.settings.os != "Windows":
            self.requires("yyjson/[>=0.10 <1]")
            self.requires("nlohmann_json/[>=3.11 <4]")

    def validate(self):
        check_min_cppstd(self, 20)

    def generate(self):
        toolchain = CMakeToolchain(self)
        for part in ("SERVICE", "TOOL", "EXAMPLES", "TESTS"):
            toolchain.variables[f"ORVEL_BUILD_{part}"] = False
        toolchain.generate()
        CMakeDeps(self).generate()

    def build(self):
        cmake = CMake(self)
        cmake.configure()
        cmake.build()

    def package(self):
        CMake(self).install()
        # Conan writes these for whoever uses the package.
        rmdir(self, os.path.join(self.package_folder, "lib", "cmake"))
        rmdir(self, os.path.join(self.package_folder, "lib", "pkgconfig"))

    def package_info(self):
        self.cpp_info.set_property("cmake_file_name", "OrvelAnalytics")
        analytics = self.cpp_info.components["analytics"]
        analytics.set_property("cmake_target_name", "Orvel::Analytics")
        analytics.set_property("pkg_config_name", "orvel-analytics")
        analytics.libs = ["orvel-analytics"]
        client = self.cpp_info.components["rpc_client"]
        client.set_property("cmake_target_name", "Orvel::RpcClient")
        client.set_property("pkg_config_name", "orvel-rpc-client")
        client.libs = ["orvel-rpc-client"]
        if self.settings.os == "Windows":
            analytics.requires = ["rpc_client"]
        else:
            analytics.requires = ["yyjson::yyjson"]
            testing = self.cpp_info.components["testing"]
            testing.set_property("cmake_target_name", "Orvel::AnalyticsTesting")
            testing.libs = ["orvel-analytics-testing"]
            testing.requires = ["nlohmann_json::nlohmann_json"]
            if not self.options.shared:
                testing.defines = ["ORVEL_ANALYTICS_TESTING_STATIC"]
        if not self.options.shared:
            analytics.defines = ["ORVEL_ANALYTICS_STATIC"]
            client.defines = ["ORVEL_RELAY_STATIC"]
