// Choosing a report's form, and writing it.

#include "report/ReportFile.h"

#include "page/Page.h"
#include "pictures/OutputFile.h"
#include "report/Document.h"
#include "report/Tables.h"
#include "system/Paths.h"
#include "values/Failure.h"

namespace fs = std::filesystem;

namespace {

struct Form
{
    const char* pszEnding;
    std::string (*pText)(const nlohmann::ordered_json& report);
};
constexpr Form kForms[] = {{".html", ReportPage}, {".json", JsonText}, {".txt", TablesText}};

/// Null for an unknown ending.
const Form* FormOf(const std::string& szPath)
{
    for (const Form& form : kForms)
        if (os::PathOf(szPath).extension() == form.pszEnding)
            return &form;
    return nullptr;
}

bool IsSameFile(const fs::path& a, const fs::path& b)
{
    std::error_code error;
    if (fs::equivalent(a, b, error))
        return true;
    const fs::path whole = fs::weakly_canonical(fs::absolute(a, error), error);
    const fs::path other = fs::weakly_canonical(fs::absolute(b, error), error);
    return !error && os::IsSamePath(whole, other);
}

} // namespace

void CheckReportFiles(const std::vector<std::string>& reports, const std::vector<std::string>& pictures)
{
    for (const std::string& szReport : reports) {
        if (!FormOf(szReport))
            throw Failure(ExitStatus::WrongCommandLine, szReport, "the report's name tells no form",
                          "a name that ends in .html, .json or .txt");
        for (const std::string& szPicture : pictures)
            if (!szPicture.empty() && IsSameFile(os::PathOf(szReport), os::PathOf(szPicture)))
                throw Failure(ExitStatus::WrongCommandLine, szReport,
                              "the report would replace the job's own picture", "another name");
    }
}

void WriteReportFile(const std::string& szPath, const nlohmann::ordered_json& report)
{
    const std::string szText = FormOf(szPath)->pText(report);
    OutputFile file(szPath);
    file.Append(reinterpret_cast<const unsigned char*>(szText.data()), szText.size());
    file.Publish();
}
