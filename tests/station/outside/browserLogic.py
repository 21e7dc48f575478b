"""The page's parts that work without a screen, each called in the browser that runs them."""

from stationBrowser import BrowserTest

# Begins a piece of JavaScript: `part(NAME)` is a module of the page.
CALL = """
const done = arguments[arguments.length - 1];
const part = (name) => import(`/${name}.js`);
(async () => { %s })().then((value) => done({ value }), (error) => done({ error: `${error}` }));
"""

FRESH = """
const { Freshness } = await part("freshness");
const fresh = new Freshness();
const at = (ms, slept = 0) => ({ steady: ms - slept, wall: 1e12 + ms });
const beat = (ms, late = 0) => fresh.beat(5e11 + ms - late, at(ms));
"""

LEADERS = """
const { Leadership } = await part("leadership");
const name = `test-${Math.random()}`;
const tabs = [];
const open = () => {
    const tab = { told: [], leads: 0 };
    tab.leadership = new Leadership(new BroadcastChannel(name), {
        begin: () => { ++tab.leads; }, end: () => { --tab.leads; },
        told: (message) => tab.told.push(message.kind),
        asked: (to) => tab.leadership.say({ kind: "snapshot", to }),
    });
    tab.leadership.start();
    tabs.push(tab);
    return tab;
};
const wait = (ms) => new Promise((after) => setTimeout(after, ms));
const until = async (isTrue) => { while (!isTrue()) await wait(20); };
const leaders = () => tabs.map((tab) => tab.leads);
"""


class BrowserLogic(BrowserTest):
    """Expected values are worked out by hand."""

    def setUp(self):
        super().setUp()
        self.browse(800, 480)
        self.browser.driver.set_script_timeout(20)

    def runs(self, text):
        """What a piece of JavaScript in the page returns."""
        answer = self.browser.driver.execute_async_script(CALL % text)
        self.assertNotIn("error", answer)
        return answer["value"]

    def typed_text_becomes_a_number_or_nothing(self):
        for typed, value in (("21.5", "21.5"), (" -7 ", "-7"), (".5", "0.5"), ("1e3", "1000"),
                             ("0x1F", "31"), ("0b101", "5"), ("true", "true"), ("OFF", "false"),
                             ("", "null"), ("nan", "null"), ("1,5", "null"), ("5 V", "null"),
                             ("1e999", "null"), ("0x", "null"), ("--1", "null")):
            with self.subTest(typed=typed):
                self.assertEqual(value, self.runs(
                    f"return String((await part('tagWriting')).typedValue({typed!r}));"))

    def values_have_the_text_of_the_api(self):
        for value, text in (("21.5", "21.5"), ("true", "1"), ("false", "0"), ("null", "—"),
                            ("-0", "-0"), ("4294967295", "4294967295"), ("'nan'", "nan")):
            self.assertEqual(text, self.runs(f"return (await part('format')).valueText({value});"))
        for value, text in (("0", "0"), ("0.0001", "0.0001"), ("0.00001", "1e-05"),
                            ("999999", "999999"), ("1000000", "1e+06"), ("1234567", "1234567"),
                            ("-12345678900", "-1.23456789e+10"), ("'inf'", "inf")):
            self.assertEqual(text, self.runs(
                f"return (await part('format')).valueText({value}, 'float32:low');"))

    def ages_read_as_people_say_them(self):
        for ms, text in ((0, "0 s"), (999, "0 s"), (99999, "99 s"), (100000, "1 min"),
                         (3599999, "59 min"), (3600000, "1 h"), (12000000, "3 h 20 min"),
                         (86400000, "1 d"), (352800000, "4 d 2 h"), (-5, "0 s")):
            self.assertEqual(text, self.runs(f"return (await part('format')).spanText({ms});"))

    def recipe_files_are_read_as_kakb_host_reads_them(self):
        file = ('# a comment\\r\\nName;station;AREA;address;type;value;note\\r\\n'
                '"a; ""b""";1; MW ;100;float32:high;12,5;x\\r\\n;;;\\r\\nc;2;MW;1;uint16;7;\\r\\n')
        rows = self.runs(f"return (await part('csv')).recipeRows('{file}');")
        self.assertEqual([
            {"name": 'a; "b"', "station": "1", "area": "MW", "address": "100",
             "type": "float32:high", "value": "12.5"},
            {"name": "c", "station": "2", "area": "MW", "address": "1", "type": "uint16",
             "value": "7"}], rows)

    def written_recipe_file_is_read_back(self):
        row = {"name": 'odd, "name"\n#', "station": "1", "area": "MW", "address": "1",
               "type": "uint16", "value": "7"}
        self.assertEqual([row], self.runs(f"""
            const {{ recipeFile, recipeRows }} = await part("csv");
            return recipeRows(recipeFile([{row!r}]));"""))

    def malformed_recipe_file_is_refused_in_words(self):
        for file, reason in (("name,station\\na,1\\n", "no column area, address, type"),
                             ('name\\n"a\\n', "line 2: a quoted field has no closing quote"),
                             ('name\\n"a\\nb"\\n"c\\n', "line 4: a quoted field"),
                             ('name\\n"a"b\\n', "line 2: there is text behind a closing quote")):
            said = self.runs(f"""
                const {{ recipeRows }} = await part("csv");
                try {{ recipeRows('{file}'); return ""; }} catch (e) {{ return e.message; }}""")
            self.assertIn(reason, said)

    def test_stream_is_read_in_any_pieces(self):
        stream = ('id: 7\\nevent: beat\\ndata: {"time":1}\\n\\n: nothing\\nid: 8\\n'
                  'event: values\\ndata: {"full":tr\\nevent: gap\\n\\n'
                  'id: 9\\r\\nevent:beat\\r\\ndata:{"time":\\r\\ndata: 2}\\r\\n\\r\\n')
        for size in (1, 2, 7, 1000):
            messages = self.runs(f"""
                const {{ MessageReader }} = await part("eventConnection");
                const messages = [];
                const reader = new MessageReader((message) => messages.push(message));
                const text = '{stream}';
                for (let i = 0; i < text.length; i += {size})
                    reader.take(text.slice(i, i + {size}));
                return messages;""")
            self.assertEqual([{"event": "beat", "data": {"time": 1}, "id": "7"},
                              {"event": "beat", "data": {"time": 2}, "id": "9"}], messages)

    def page_is_live_while_beats_come_in_time(self):
        self.assertEqual([True, True, True, False, True], self.runs(FRESH + """
            return [beat(0), fresh.look(at(1799)), beat(1800), fresh.look(at(3600)), beat(3700)];
        """))

    def late_beats_of_a_frozen_page_are_not_live(self):
        self.assertEqual([True, False, False, False, True], self.runs(FRESH + """
            return [beat(0), beat(10000, 9000), beat(10001, 5000), beat(10002, 2000), beat(10003)];
        """))

    def sleep_of_the_machine_ends_the_life_of_the_page(self):
        self.assertEqual([True, False], self.runs(FRESH + """
            return [beat(0), fresh.look(at(60000, 59900))]; // the steady clock stood still
        """))

    def clocks_that_drift_apart_leave_the_page_live(self):
        self.assertEqual(0, self.runs(FRESH + """
            let lost = 0; // half a millisecond a second, for a week
            for (let s = 0; s < 604800; ++s) if (!beat(s * 1000, s / 2)) ++lost;
            return lost;
        """))

    def late_answer_does_not_make_the_page_live(self):
        self.assertEqual([False, True, False], self.runs(FRESH + """
            fresh.answered(at(0), at(1800));
            const late = fresh.isLive;
            fresh.answered(at(2000), at(3700));
            const soon = fresh.isLive;
            fresh.putAside();
            return [late, soon, fresh.isLive];
        """))

    def one_tab_leads_and_the_next_takes_over(self):
        self.assertEqual([[1, 0, 0], [0, 1], 0, True], self.runs(LEADERS + """
            const first = open();
            await until(() => first.leads === 1);
            open();
            open();
            await wait(300);
            const begun = leaders();
            first.leadership.stop(); // resigns
            await until(() => leaders().slice(1).includes(1));
            const next = leaders().slice(1).sort();
            const silent = tabs.find((tab) => tab.leads === 1);
            silent.leadership.say = () => {}; // as one that crashed
            const after = () => tabs.find((tab) => tab.leads === 1 && tab !== silent);
            await until(() => after() && silent.leads === 0); // it heard the claim
            return [begun, next, silent.leads, after() !== undefined];
        """))

    def tabs_that_begin_at_once_agree_on_one_leader(self):
        self.assertEqual([0, 0, 0, 0, 1], self.runs(LEADERS + """
            for (let i = 0; i < 5; ++i) open();
            await wait(1000);
            await until(() => leaders().filter((leads) => leads === 1).length === 1);
            return leaders().sort();
        """))

    # A browser starts for each test, so that each holds what belongs together.

    def test_typed_values_and_texts(self):
        self.typed_text_becomes_a_number_or_nothing()
        self.values_have_the_text_of_the_api()
        self.ages_read_as_people_say_them()

    def test_recipe_files(self):
        self.recipe_files_are_read_as_kakb_host_reads_them()
        self.written_recipe_file_is_read_back()
        self.malformed_recipe_file_is_refused_in_words()

    def test_life_of_the_page(self):
        self.page_is_live_while_beats_come_in_time()
        self.late_beats_of_a_frozen_page_are_not_live()
        self.sleep_of_the_machine_ends_the_life_of_the_page()
        self.clocks_that_drift_apart_leave_the_page_live()
        self.late_answer_does_not_make_the_page_live()

    def test_leading_tab(self):
        self.one_tab_leads_and_the_next_takes_over()
        self.tabs_that_begin_at_once_agree_on_one_leader()
