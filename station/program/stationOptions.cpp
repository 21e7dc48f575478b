#include "program/stationOptions.h"

#include "plan/durationText.h"
#include "program/configPlant.h"
#include "program/settingTexts.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>

namespace {

std::string helpFooter()
{
    std::string text = "Signals:\n  SIGHUP reads the configuration again; without --config it ends "
                       "the station.\n  SIGINT and SIGTERM end the station.\n\nExit status:";
    int status = 0;
    for (const char* const meaning : STATION_STATUS_MEANINGS)
        text += "\n  " + std::to_string(status++) + "  " + meaning;
    return text;
}

CLI::Validator within(NumberRange range)
{
    return CLI::Range(range.lowest, range.highest);
}

/// An option with a text.
CLI::Option* addText(CLI::App& app, const char* name, QString& text, const char* help)
{
    return app.add_option_function<std::string>(
        name, [&text](const std::string& given) { text = QString::fromStdString(given); }, help);
}

void addFiles(CLI::App& app, StationOptions& options)
{
    addText(app, "--config", options.config, "configuration (TOML)")->type_name("FILE");
    app.add_flag("--check", options.isCheck,
                 "print all mistakes of the configuration and of its tag files, and end");
    addText(app, "--state", options.state,
            "folder of the history and of MQTT's files (default: $STATE_DIRECTORY, else "
            "$XDG_STATE_HOME/kakb-station, else ~/.local/state/kakb-station)")
        ->type_name("DIR");
    app.add_flag("--no-history", options.hasNoHistory, "keep no history");
    addText(app, "--driver", options.driver,
            "driver library (default: the library beside this program, else the system's)")
        ->type_name("FILE");
}

void addAccess(CLI::App& app, StationOptions& options)
{
    app.add_option_function<std::string>(
           "--listen",
           [&options](const std::string& text) {
               options.listen = listenAddress(QString::fromStdString(text));
           },
           "IP address and port of the page; an IPv6 address in brackets; port 0: any free one, "
           "which the first line names")
        ->check(CLI::Validator(
            [](const std::string& text) {
                return listenProblem(QString::fromStdString(text)).toStdString();
            },
            "ADDRESS:PORT"))
        ->default_str("127.0.0.1:8480");
    addText(app, "--token-file", options.tokenFile,
            "file of the token that every request needs; made when it is missing; required for an "
            "address that is not of this machine alone")
        ->type_name("FILE");
    app.add_flag("--allow-writes", options.allowsWrites,
                 "let the page and other programs write the tags with access rw");
    app.add_option_function<std::vector<std::string>>(
           "--host-name",
           [&options](const std::vector<std::string>& names) {
               for (const std::string& name : names)
                   options.hostNames << QString::fromStdString(name);
           },
           "further name that browsers reach the station by; repeatable")
        ->check(CLI::Validator(
            [](const std::string& name) {
                return hostNameProblem(QString::fromStdString(name)).toStdString();
            },
            "NAME"))
        ->type_name("")
        ->expected(1)
        ->take_all();
}

void addLink(CLI::App& app, StationOptions& options)
{
    addText(app, "--tags", options.tags,
            "tag file (CSV); default, on the simulated PLC only: the demo's tag file")
        ->type_name("FILE");
    addText(app, "--link", options.link,
            "sim, serial:DEVICE,BAUD,DATA BITS,PARITY,STOP BITS or tcp:HOST,PORT; the driver "
            "supplies omitted parts")
        ->type_name("LINK")
        ->default_str("sim");
    app.add_option_function<std::string>(
           "--pace",
           [&options](const std::string& text) {
               options.paceMs = durationMs(QString::fromStdString(text));
           },
           "shortest time from the start of a cycle to the next start, such as 500ms, 10s or 5m; "
           "0: cycles follow at once (default: 100ms over TCP, else 0)")
        ->check(CLI::Validator(
            [](const std::string& text) {
                return durationProblem(QString::fromStdString(text)).toStdString();
            },
            "DURATION"));
    app.add_option("--timeout-ms", options.timeoutMs,
                   "longest time that a station takes to begin its answer; over TCP, until all of "
                   "the answer is there")
        ->check(within(TIMEOUT_RANGE))
        ->capture_default_str();
    app.add_option("--attempts", options.attempts, "number of attempts for each request")
        ->check(within(ATTEMPTS_RANGE))
        ->capture_default_str();
    app.add_option("--pause-ms", options.pauseMs,
                   "pause before a lost link is opened again; doubles up to 8 s")
        ->check(within(PAUSE_RANGE))
        ->capture_default_str();
}

/// A check of one text by a function that tells the problem in words.
CLI::Validator checkedBy(QString (*problem)(const QString&))
{
    return CLI::Validator(
        [problem](const std::string& text) {
            return problem(QString::fromStdString(text)).toStdString();
        },
        "");
}

QString dialectsProblem(const QString& text)
{
    PlantSettings settings;
    return takeDialects(text.split(QLatin1Char(',')), settings);
}

void addMqtt(CLI::App& app, StationOptions& options)
{
    app.add_option_function<std::vector<std::string>>(
           "--mqtt",
           [&options](const std::vector<std::string>& texts) {
               for (const std::string& text : texts)
                   options.mqttServers.push_back(*brokerAddress(QString::fromStdString(text)));
           },
           "broker that gets the values, mqtt://HOST:PORT or mqtts://HOST:PORT; repeatable: the "
           "next one is tried when one is lost (default: none)")
        ->check(checkedBy(brokerProblem))
        ->type_name("URL")
        ->expected(1)
        ->take_all();
    addText(app, "--mqtt-group", options.mqttGroup, "Sparkplug group (default: kakb)")
        ->check(checkedBy(plantIdProblem))
        ->type_name("ID");
    addText(app, "--mqtt-node", options.mqttNode,
            "Sparkplug edge node, and first level of the JSON topics (default: the station's name)")
        ->check(checkedBy(plantIdProblem))
        ->type_name("ID");
    app.add_option_function<std::string>(
           "--mqtt-dialect",
           [&options](const std::string& text) {
               options.mqttDialects = QString::fromStdString(text).split(QLatin1Char(','));
           },
           "sparkplug, json or sparkplug,json (default: sparkplug)")
        ->check(checkedBy(dialectsProblem))
        ->type_name("DIALECTS");
    addText(app, "--mqtt-primary-host", options.mqttPrimaryHost,
            "publish only while this Sparkplug host is online (default: always)")
        ->check(checkedBy(plantIdProblem))
        ->type_name("ID");
    app.add_flag("--mqtt-commands", options.takesMqttCommands,
                 "let programs write tags through the broker; needs --allow-writes");
}

/// The error in a command line, in one sentence.
std::string sentenceOf(const CLI::App& app, const CLI::ParseError& error)
{
    const std::vector<std::string> words = app.remaining();
    if (error.get_exit_code() != int(CLI::ExitCodes::ExtrasError) || words.empty())
        return error.what();
    return "there is no option \"" + words.front() + "\"";
}

/// The status when the station is not to start. A help that could not be written was not seen.
StationStatus shownStatus()
{
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return STATION_DONE;
    std::fprintf(stderr, "kakb-station: cannot write the output\n");
    return STATION_USAGE;
}

StationStatus usageError(std::string sentence)
{
    std::replace(sentence.begin(), sentence.end(), '\n', ' ');
    std::fprintf(stderr, "kakb-station: %s (kakb-station --help says more)\n", sentence.c_str());
    return STATION_USAGE;
}

} // namespace

std::optional<StationStatus> parseStationOptions(int argc, char** argv, StationOptions& options)
{
    CLI::App app("Resident station: shows the values of its links in a browser", "kakb-station");
    app.footer(helpFooter());
    app.set_version_flag("--version", "kakb-station " KAKB_PROJECT_VERSION);
    addFiles(app, options);
    addAccess(app, options);
    addLink(app, options);
    addMqtt(app, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() != 0) return usageError(sentenceOf(app, error));
        app.exit(error);
        return shownStatus();
    }
    if (!options.config.isEmpty()) {
        for (const char* const name :
             {"--tags", "--link", "--pace", "--timeout-ms", "--attempts", "--pause-ms"})
            if (app.count(name) > 0)
                return usageError(std::string(name) +
                                  " describes the one link of a station without --config");
    }
    return std::nullopt;
}
