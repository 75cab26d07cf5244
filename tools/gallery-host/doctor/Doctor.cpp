#include "gallery-host/doctor/Doctor.h"

#include <algorithm>
#include <iterator>

#include "CobalixUtil.h"
#include "base/Text.h"
#include "gallery-host/base/Failure.h"
#include "gallery-host/base/Printable.h"
#include "gallery-host/doctor/FolderChecks.h"
#include "gallery-host/doctor/ProductChecks.h"
#include "gallery-host/doctor/RecordChecks.h"
#include "gallery-host/message/Envelope.h"
#include "gallery-host/output/TextTable.h"
#include "gallery-host/output/Words.h"

namespace host {
namespace {

const char* Word(Health health) {
    if (health == Health::kGood) return "OK";
    return health == Health::kNote ? "note" : "WRONG";
}

const char* ColourOf(Health health) {
    if (health == Health::kGood) return "\x1b[32m";
    return health == Health::kNote ? "\x1b[33m" : "\x1b[31m";
}

Findings LookAtAll(const std::string& plugin) {
    Findings all = CheckProduct(plugin);
    const auto add = [&all](Findings&& more) {
        all.insert(all.end(), std::make_move_iterator(more.begin()), std::make_move_iterator(more.end()));
    };
    Findings ofSettings;
    const ProductFolders folders = ReadFolders(ofSettings);
    add(std::move(ofSettings));
    add(CheckFolders(folders));
    add(CheckRecord(folders));
    return all;
}

void Mend(Findings& findings) {
    for (Finding& finding : findings)
        if (finding.health != Health::kGood && finding.mend) {
            finding.advice = finding.mend();
            finding.health = Health::kNote;
        }
}

std::string Table(const Findings& findings) {
    std::vector<TableRow> rows;
    for (const Finding& finding : findings) {
        std::string text = Printable(finding.text);
        if (!finding.advice.empty()) text += "; " + Printable(finding.advice);
        rows.push_back({{Word(finding.health), finding.check, text}, ColourOf(finding.health)});
    }
    return TableText(rows, WantsColour());
}

std::string Json(const Findings& findings) {
    KXP::Document document(rapidjson::kObjectType);
    KXP::Allocator& allocator = document.GetAllocator();
    KXP::Value checks(rapidjson::kArrayType);
    for (const Finding& finding : findings) {
        KXP::Value check(MakeTexts({{"check", finding.check},
                                    {"state", KXP::ToLower(Word(finding.health))},
                                    {"text", finding.text},
                                    {"advice", finding.advice}}),
                         allocator);
        checks.PushBack(check, allocator);
    }
    document.AddMember("checks", checks, allocator);
    return PrintableJson(ToPrettyText(document)) + "\n";
}

}  // namespace

void RunDoctor(Output& output, const DoctorOptions& options) {
    // The parts that it looks with log what is said better in a line of the table.
    KXP::LogInit(
        KXP::ProfileProduct, [](auto...) {}, nullptr);
    Findings findings = LookAtAll(options.plugin);
    if (options.fix) Mend(findings);
    output.Write(options.json ? Json(findings) : Table(findings));
    const auto wrong =
        static_cast<size_t>(std::count_if(findings.begin(), findings.end(), [](const Finding& finding) {
            return finding.health == Health::kBad;
        }));
    if (wrong > 0)
        throw Failure(kExitFailed, Counted(wrong, "thing") + (wrong == 1 ? " is" : " are") + " wrong");
    Say("nothing is wrong");
}

}  // namespace host
