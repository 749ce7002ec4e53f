"""The Conan 2 recipe: conan create packaging/conan"""
import os

from conan import ConanFile
from conan.tools.cmake import CMake, CMakeDeps, CMakeToolchain, cmake_layout
from conan.tools.files import copy

ROOT = os.path.join("..", "..")
SOURCES = ("CMakeLists.txt", "NOTICE", "CHANGELOG.md", "SECURITY.md", "cmake/*", "include/*", "src/*", "Utils/*", "resources/*",
           "examples/*", "tests/*", "packaging/*")


class QuillonConan(ConanFile):
    name = "quillon"
    version = "1.0.0"
    description = "Common library of the Quillon endpoint agent"
    package_type = "shared-library"
    settings = "os", "arch", "compiler", "build_type"
    options = {"agent": [True, False], "testkit": [True, False], "tests": [True, False]}
    default_options = {"agent": False, "testkit": False, "tests": False}

    def export_sources(self):
        root = os.path.join(self.recipe_folder, ROOT)
        for pattern in SOURCES:
            copy(self, pattern, root, self.export_sources_folder)

    def requirements(self):
        self.requires("log4cplus/2.0.8")
        self.requires("nlohmann_json/3.11.2")
        self.requires("pugixml/1.13")
        if self.settings.os != "Windows":
            self.requires("openssl/[>=3.0 <4]")
        if self._needs_sqlite:
            self.requires("sqlite3/3.40.1")
        if self.options.agent:
            self.requires("cli11/2.1.2")
        if self.options.testkit or self.options.tests:
            self.requires("gtest/1.12.1")

    @property
    def _needs_sqlite(self):
        return self.options.agent or self.options.testkit or self.options.tests

    def layout(self):
        cmake_layout(self)

    def generate(self):
        toolchain = CMakeToolchain(self)
        toolchain.cache_variables["QUILLON_BUILD_EXAMPLES"] = bool(self.options.agent)
        toolchain.cache_variables["QUILLON_BUILD_TESTKIT"] = bool(self.options.testkit)
        toolchain.cache_variables["QUILLON_BUILD_TESTS"] = bool(self.options.tests)
        toolchain.generate()
        CMakeDeps(self).generate()

    def build(self):
        cmake = CMake(self)
        cmake.configure()
        cmake.build()

    def package(self):
        CMake(self).install()
        copy(self, "NOTICE", self.source_folder, os.path.join(self.package_folder, "licenses"))

    def package_info(self):
        self.cpp_info.set_property("cmake_find_mode", "none")  # the package has its own configuration
        self.cpp_info.builddirs = [os.path.join("lib", "cmake", "quillon")]
        self.cpp_info.libs = ["quillon"]
