// The command line of trim, meme, engrave and montage.
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>

#include "gallery-host/base/Failure.h"
#include "gallery-host/base/Paths.h"
#include "gallery-host/commandline/CommandLine.h"
#include "gallery-host/commandline/TimeText.h"
#include "gallery-host/message/MessageSocket.h"
#include "gallery-host/verbs/MontageVerb.h"
#include "gallery-host/verbs/VideoVerbs.h"

namespace host {
namespace {

constexpr const char* kTrimFooter =
    R"(TIME is in seconds, or has minutes and hours in front: 1.5, 90, 1:30 or 1:02:03.5.
Examples:
  gallery-host trim "Second lap.mp4" --from 1:30 --to 1:42.5
  gallery-host trim "Second lap.mp4" -o finish.mp4 --from 90 --length 12.5
Without -o the clip replaces the video. A clip outside of the gallery is a success too, but is not on record. With
--json
  {"file":"/home/me/a.mp4","output":"/home/me/b.mp4","onRecord":true,"ok":true}
or "ok":false and the reason as "error".
)";

constexpr const char* kMemeFooter = R"(Examples:
  gallery-host meme "Second lap.mp4" --top "So close" --bottom "and yet so far"
  gallery-host meme "Second lap.mp4" --clear
The texts are kept on record; the video itself does not change. A bar without a text is empty.
)";

constexpr const char* kEngraveFooter = R"(Examples:
  gallery-host engrave clip.mp4 --app "Rustwind Rally" --profile "Rustwind Rally"
  gallery-host engrave clip.mp4 --highlight --definition FINISH --group race-7 --significance 4
The plug-in does not report a failure, so a file that has not changed counts as one.
)";

constexpr const char* kMontageFooter = R"(Examples:
  gallery-host montage release/recipe.js *.mp4 song.mp3 -o "Best of.mp4" --title "Best of"
RECIPE is the script of a recipe, relative to the recipes from the cloud. Ctrl-C cancels the montage and waits for its
end; a second Ctrl-C does not wait. With --json each step is a line
  {"progress":12.5}
and the last line is {"output":"/home/me/Best of.mp4","ok":true}, or has "ok":false and the reason.
)";

void AddFile(CLI::App& verb, VideoSubject& file, const char* about) {
    verb.add_option("FILE", file.name, about)->required()->type_name("");
    verb.add_flag("--json", file.json, kJsonHelp);
}

// The job of a verb over one file.
template <typename Options>
Prepare OverFile(const std::shared_ptr<Options>& options, void (*run)(Session&, Output&, const Options&)) {
    return [options, run](const Preparation&) -> Job {
        options->file.path = AbsolutePath(options->file.name);
        return [options, run](Session& session, Output& output) { run(session, output, *options); };
    };
}

CLI::Option* AddTime(CLI::App& verb, const char* name, std::string& text, const char* about) {
    return verb.add_option(name, text, about)->type_name("TIME")->check([](const std::string& time) {
        return ReadMilliseconds(time) ? "" : "not a time such as 1.5, 90, 1:30 or 1:02:03.5: " + time;
    });
}

void AddTrim(CLI::App& app, Prepare& chosen) {
    struct Arguments {
        TrimOptions options;
        std::string from = "0";
        std::string to;
        std::string length;
    };
    const auto arguments = std::make_shared<Arguments>();
    CLI::App* trim = app.add_subcommand("trim", "Cut a clip out of a video, without loss.");
    AddFile(*trim, arguments->options.file, "the video");
    trim->add_option("-o,--output", arguments->options.target, "where the clip goes")->type_name("OUT");
    AddTime(*trim, "--from", arguments->from, "where it begins; by default the beginning");
    CLI::Option_group* end = trim->add_option_group("end");
    AddTime(*end, "--to", arguments->to, "where it ends");
    AddTime(*end, "--length", arguments->length, "how long it is");
    end->require_option(1);
    trim->footer(kTrimFooter);
    Choose(*trim, chosen, [arguments](const Preparation&) -> Job {
        TrimOptions& options = arguments->options;
        options.file.path = AbsolutePath(options.file.name);
        options.target = options.target.empty() ? options.file.path : AbsolutePath(options.target);
        options.from = *ReadMilliseconds(arguments->from);
        options.length = arguments->length.empty() ? *ReadMilliseconds(arguments->to) - options.from
                                                   : *ReadMilliseconds(arguments->length);
        if (options.length < 1) throw Failure(kExitUsage, "a clip lasts at least a millisecond");
        return
            [arguments](Session& session, Output& output) { RunTrim(session, output, arguments->options); };
    });
}

void AddMeme(CLI::App& app, Prepare& chosen) {
    const auto options = std::make_shared<MemeOptions>();
    CLI::App* meme = app.add_subcommand("meme", "Put texts over a video, or remove them.");
    AddFile(*meme, options->file, "a capture on record");
    CLI::Option* clear = meme->add_flag("--clear", "remove the texts");
    CLI::Option* top =
        meme->add_option("--top", options->top, "the text of the upper bar")->type_name("TEXT");
    CLI::Option* bottom =
        meme->add_option("--bottom", options->bottom, "the text of the lower bar")->type_name("TEXT");
    clear->excludes(top)->excludes(bottom);
    meme->footer(kMemeFooter);
    const Prepare run = OverFile(options, RunMeme);
    Choose(*meme, chosen, [=](const Preparation& preparation) -> Job {
        if (clear->count() + top->count() + bottom->count() == 0)
            throw Failure(kExitUsage, "one of --top, --bottom and --clear is needed");
        return run(preparation);
    });
}

void AddEngrave(CLI::App& app, Prepare& chosen) {
    const auto options = std::make_shared<EngraveOptions>();
    CLI::App* engrave = app.add_subcommand("engrave", "Write what is known about a video into its MP4 file.");
    AddFile(*engrave, options->file, "the video");
    const auto text = [engrave](const char* name, std::string& value, const char* type, const char* about) {
        engrave->add_option(name, value, about)->type_name(type);
    };
    text("--app", options->app, "NAME", "the game");
    text("--profile", options->profile, "NAME", "its profile");
    text("--short-name", options->shortName, "NAME", "its short name");
    engrave->add_option("--cms-id", options->cmsId, "its CMS id")->type_name("N");
    engrave->add_flag("--highlight", options->highlight, "the video is a highlight");
    text("--definition", options->definition, "ID", "the definition of the highlight");
    text("--group", options->group, "ID", "the group that it belongs to");
    engrave->add_option("--significance", options->significance, "how much it matters")->type_name("N");
    text("--media-type", options->mediaType, "WORD", "what kind of video, for example Montage");
    engrave->footer(kEngraveFooter);
    Choose(*engrave, chosen, OverFile(options, RunEngrave));
}

void AddMontage(CLI::App& app, Prepare& chosen) {
    struct Arguments {
        MontageOptions options;
        std::vector<std::string> inputs;
    };
    const auto arguments = std::make_shared<Arguments>();
    CLI::App* montage = app.add_subcommand("montage", "Make one video of several captures.");
    montage->add_option("RECIPE", arguments->options.recipe, "the script of the recipe")
        ->required()
        ->type_name("")
        ->check([](const std::string& recipe) { return recipe.empty() ? "it is empty" : ""; });
    montage->add_option("INPUTS", arguments->inputs, "videos, images and audio files")
        ->required()
        ->type_name("")
        ->expected(1, -1);
    montage->add_option("-o,--output", arguments->options.out, "the video to make")
        ->required()
        ->type_name("OUT");
    montage->add_option("--title", arguments->options.title, "the text at its beginning")->type_name("TEXT");
    montage->add_flag("--json", arguments->options.json, kJsonHelp);
    montage->footer(kMontageFooter);
    Choose(*montage, chosen, [arguments](const Preparation&) -> Job {
        MontageOptions& options = arguments->options;
        options.out = AbsolutePath(options.out);
        const std::string folder = std::filesystem::path(options.out).parent_path().string();
        if (!IsFolder(folder)) throw Failure(kExitFailed, "there is no folder " + folder);
        for (const std::string& input : arguments->inputs)
            options.inputs.push_back(ReadMontageInput(input));
        // The job owns it, so it is closed after the plug-in has ended.
        const auto messages = std::make_shared<MessageSocket>();
        return [arguments, messages](Session& session, Output& output) {
            session.Relay(*messages);
            RunMontage(session, output, arguments->options);
        };
    });
}

}  // namespace

void AddVideoVerbs(CLI::App& app, Prepare& chosen) {
    AddTrim(app, chosen);
    AddMeme(app, chosen);
    AddEngrave(app, chosen);
    AddMontage(app, chosen);
}

}  // namespace host
