#include "Console/SamplePicture.h"
#include "Doctor/Surroundings.h"
#include "Linux/Base/DateModule.h"
#include "Linux/Base/Modules.h"
#include "Linux/Images/ProcessImageCodec.h"
#include "Linux/Panel/ProcessNamePanelView.h"
#include "Linux/Wayland/DataControlModule.h"
#include "Linux/X11/Focus/FocusModule.h"

#include <glib.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <system_error>

namespace tavel::surroundings {

namespace {

using GlibText = std::unique_ptr<gchar, decltype(&g_free)>;

void examineModule(Report& report, const std::string& name, const char* entry, const std::string& loss) {
    try {
        loadModuleEntry(modulePath(name), entry);
        report.line(name, "loads");
    } catch (const std::runtime_error& error) {
        report.limitation(name, std::string("cannot be loaded: ") + error.what(), loss);
    }
}

/// What the system's loader says it misses for the program; empty if nothing. The loader does not start the
/// program for this question.
std::string missingLibraries(const std::filesystem::path& program) {
    std::string path = program.string();
    std::array<gchar*, 2> arguments{path.data(), nullptr};
    gchar** const environment = g_environ_setenv(g_get_environ(), "LD_TRACE_LOADED_OBJECTS", "1", TRUE);
    gchar* output = nullptr;
    gchar* errors = nullptr;
    g_spawn_sync(nullptr, arguments.data(), environment, G_SPAWN_DEFAULT, nullptr, nullptr, &output, &errors,
                 nullptr, nullptr);
    g_strfreev(environment);
    const GlibText ownedOutput(output, g_free);
    const GlibText ownedErrors(errors, g_free);
    std::istringstream lines(std::string(output != nullptr ? output : "") +
                             (errors != nullptr ? errors : ""));
    std::string missing;
    for (std::string line; std::getline(lines, line);) {
        if (line.find("not found") != std::string::npos)
            missing += (missing.empty() ? "" : ", ") + line.substr(line.find_first_not_of(" \t"));
    }
    return missing;
}

/// What is wrong with the program file; empty if nothing.
std::string programProblem(const std::filesystem::path& program) {
    if (access(program.c_str(), X_OK) != 0)
        return "cannot be started: " + program.string() + ": " + std::generic_category().message(errno);
    const std::string missing = missingLibraries(program);
    return missing.empty() ? "" : "cannot be started: " + missing;
}

void examineImages(Report& report, Platform& platform) {
    const std::string name = imageProgramPath().filename().string();
    std::string problem = programProblem(imageProgramPath());
    if (problem.empty() && !platform.imageCodec().encodePng(Bytes::copyOf(samplePicture())))
        problem = "starts, but does not convert a picture";
    if (problem.empty())
        report.line(name, "converts a picture");
    else
        report.limitation(
            name, problem,
            "Without it, no picture is converted to PNG or JPEG, for the parent or for a file to paste.");
}

void examinePanel(Report& report) {
    const std::string name = namePanelProgramPath().filename().string();
    const std::string problem = programProblem(namePanelProgramPath());
    if (problem.empty())
        report.line(name, "is there, with its libraries");
    else
        report.limitation(name, problem, "Without it, the file prompt cannot be switched on.");
}

} // namespace

void examineHelpers(Report& report, Platform& platform) {
    report.section("Modules and programs");
    report.line("directory", moduleDirectory().lexically_normal().string());
    examineModule(report, "tavel-dates", dateModuleEntryName,
                  "Without it, the date in a proposed file name has European digits and calendar.");
    examineModule(report, "tavel-focus", focusModuleEntryName,
                  "Without it, the file prompt can be switched on, but Ctrl+V is never taken.");
    examineModule(report, "tavel-wayland", dataControlModuleEntryName,
                  "Without it, the clipboard of a Wayland compositor is not used.");
    examineImages(report, platform);
    examinePanel(report);
}

} // namespace tavel::surroundings
