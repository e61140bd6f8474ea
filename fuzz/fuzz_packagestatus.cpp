// packageStatusFromOutput against a plain restatement of the rule, on arbitrary bytes as
// dpkg-query might print them: the text up to the first NUL splits at every tab into exactly
// three fields, and the third begins with "install ok". Nothing else makes a package installed,
// and reading the output never fails.
#include "fuzzcheck.h"
#include "packagestatus.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace {

bool installed(const std::string &output)
{
    const std::string text = output.substr(0, output.find('\0'));
    std::vector<std::string> fields(1);
    for (const char c : text) {
        if (c == '\t')
            fields.emplace_back();
        else
            fields.back() += c;
    }
    return fields.size() == 3 && fields[2].rfind("install ok", 0) == 0;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string output(reinterpret_cast<const char *>(data), size);
    const PackageStatus status = packageStatusFromOutput(QByteArray(output.data(), int(size)));
    require(status != PackageStatus::Failed, "only the query itself fails");
    require((status == PackageStatus::Installed) == installed(output),
            "installed exactly when three tab-separated fields end in an \"install ok\" status");
    return 0;
}
