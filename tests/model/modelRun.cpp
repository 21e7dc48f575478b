// Drives the real driver and the model with the same random calls and compares everything that a
// host can see.
//
//   model_run [--seed N] [--calls N] [--driver FILE] [--quiet]
//
// --seed    first sequence; each further sequence takes the next number (default 1)
// --calls   runs whole sequences until that many calls were made (default 1000000); 1 runs the
//           sequence of the seed alone, as printed by a failure
// --driver  the library to load (default: the one that was built)
// --quiet   no table of how often each branch was reached
//
// Exit status: 0 they agree, 1 they do not, 2 usage or no driver.

#include "campaign.h"
#include "driver/driverLibrary.h"

#include <CLI/CLI.hpp>

#include <iostream>

namespace {

enum ExitStatus { AGREED, DISAGREED, UNUSABLE };

int run(const std::string& driverFile, std::uint64_t seed, unsigned long long calls, bool quiet)
{
    const DriverLibrary library(QString::fromStdString(driverFile));
    const model::CampaignResult result = model::runCampaign(library, seed, calls);
    if (!quiet && result.agreed) std::cout << model::coverageReport();
    std::cout << result.calls << " calls in " << result.sequences << " sequences, "
              << result.seconds << " s\n"
              << result.failure;
    return result.agreed ? AGREED : DISAGREED;
}

} // namespace

int main(int argc, char** argv)
{
    std::uint64_t seed = 1;
    unsigned long long calls = 1000000;
    std::string driverFile = KAKB_DRIVER_FILE;
    bool quiet = false;
    CLI::App app("random calls of the driver and of its model");
    app.add_option("--seed", seed, "first sequence")->capture_default_str();
    app.add_option("--calls", calls, "calls to make at least")->capture_default_str();
    app.add_option("--driver", driverFile, "library to load")->capture_default_str();
    app.add_flag("--quiet", quiet, "no table of branches");
    try {
        app.parse(argc, argv);
        return run(driverFile, seed, calls, quiet);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? AGREED : UNUSABLE;
    } catch (const DriverError& error) {
        std::cerr << error.what() << "\n";
        return UNUSABLE;
    }
}
