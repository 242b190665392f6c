#include "report/report.h"

namespace vorn {

void bindReportStream(std::streambuf* buffer) {
    reportStream().rdbuf(buffer);
}

void Report::header(std::string_view title) {
    console();
    console(" --- ", title, " --- ");
    console();
    log("\n --- ", title, " --- \n\n");
}

void Report::compare(std::string_view expected, std::string_view detected) {
    both(textOf("Expected --> ", expected));
    both(textOf("Detected --> ", detected));
}

void Report::line(std::string_view consoleForm, std::string_view logForm) {
    console(consoleForm);
    log_ += logForm;
}

void Report::both(std::string_view text) {
    console(text);
    log_ += text;
    log_ += '\n';
}

void Report::conclude(VORNTestResult& result, TestRecord& record, const Verdict& verdict) {
    record.status = verdict.status;
    record.code = verdict.code;
    record.message = verdict.message;
    result = verdict.result;
}

}  // namespace vorn
