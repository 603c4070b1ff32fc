#include "tools/schema/SchemaTool.h"

#include "engine/scene/components/SceneSchema.h"
#include "tools/schema/SchemaJson.h"
#include "tools/schema/SchemaMarkdown.h"

#include <cstdio>
#include <exception>
#include <string>

namespace Vornu::Schema
{
namespace
{

constexpr int kSuccess = 0;
constexpr int kFailure = 1;
constexpr int kUsageError = 2;

constexpr std::string_view kUsageText =
    "Usage: vornu-schema [--markdown]\n"
    "\n"
    "Prints every registered asset type, enumeration, type and component as JSON.\n"
    "\n"
    "  --markdown  Print them as a reference page instead.\n"
    "  -h, --help  Print this text.\n";

void Print(std::FILE* stream, std::string_view text)
{
    std::fwrite(text.data(), 1, text.size(), stream);
}

int PrintSchema(std::string (*format)(const SchemaTables&))
{
    try
    {
        Scene::EnsureSceneSchema();
        Print(stdout,
              format({Reflection::ReflectionRegistry::Instance(), Scene::ComponentRegistry::Instance()}));
    }
    catch (const std::exception& error)
    {
        for (const std::string_view part : {std::string_view("vornu-schema: "), {error.what()}, {"\n"}})
        {
            Print(stderr, part); // one by one, as it may be memory that lacks
        }
        return kFailure;
    }
    return kSuccess;
}

int RunArguments(const std::vector<std::string_view>& arguments)
{
    auto* format = &SchemaJson;
    for (const std::string_view argument : arguments)
    {
        if (argument == "--help" || argument == "-h")
        {
            Print(stdout, kUsageText);
            return kSuccess;
        }
        if (argument != "--markdown")
        {
            const char* const fault =
                argument.starts_with('-') ? "Unknown option: " : "Unexpected argument: ";
            Print(stderr, fault + std::string(argument) + "\n" + std::string(kUsageText));
            return kUsageError;
        }
        format = &SchemaMarkdown;
    }
    return PrintSchema(format);
}

} // namespace

int RunSchemaTool(const std::vector<std::string_view>& arguments)
{
    const int exitCode = RunArguments(arguments);
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0)
    {
        Print(stderr, "vornu-schema: standard output could not be written\n");
        return exitCode == kSuccess ? kFailure : exitCode;
    }
    return exitCode;
}

} // namespace Vornu::Schema
