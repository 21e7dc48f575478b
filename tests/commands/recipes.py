"""Recipes to the PLC and back; the PLC's memory is the judge."""

from commandLine import CommandLineTest, on_each_link
from tagTables import HEADER, recipe_table, table

RECIPE = {"level": 21.5, "batch": 4000000001, "speed": -300, "other speed": 1450, "horn": 1,
          "bit a": 1, "bit b": 0, "bit c": 1}
# 21.5 is 0x41AC0000 in IEEE 754, 4000000001 is 61035 * 65536 + 10241, -300 is 65236 unsigned.
# MX 30.0 to 30.2 are bits 0 to 2 of the register 15 behind 3000, QX 0.5 bit 5 of register 0.
MEMORY = ["1 QW 0 32", "1 QW 20 65236", "1 MW 3015 5", "1 MW 3060 16812", "1 MW 3062 10241",
          "1 MW 3063 61035", "2 QW 20 1450"]
# More words side by side and more bits than one request can write or read.
WORDS, BITS = 400, 200


def word(i):
    """The value of a word of the long recipe."""
    return i * 37 + 1


def long_recipe():
    """Words from MW 1000 on, bits from MX 10.0 on."""
    return table([(f"word {i}", 1, "MW", 1000 + 2 * i, "uint16", word(i)) for i in range(WORDS)] +
                 [(f"bit {i}", 1, "MX", f"{10 + i // 8}.{i % 8}", "bool", int(i % 3 == 0))
                  for i in range(BITS)], HEADER + ",value")


class Recipes(CommandLineTest):
    """Download, upload, and verification."""

    def setUp(self):
        super().setUp()
        self.path = self.file("recipe.csv", recipe_table(RECIPE))
        self.text = self.path.read_text(encoding="utf-8")

    def transfer(self, plc, command, status=0):
        """Runs kakb-host recipe."""
        return self.host(f"recipe {command} --link {plc.link}", status)

    @on_each_link
    def test_recipe_comes_back_unchanged(self, kind):
        empty = self.file("empty.csv", recipe_table(dict.fromkeys(RECIPE, "")))
        own = self.file("own.csv", empty.read_text(encoding="utf-8"))
        with self.plc(kind, "--stations 1-2") as plc:
            run = self.transfer(plc, "download recipe.csv --verify")
            self.assertEqual((["downloaded 8 values, verified"], []), (run.lines, run.errors))
            run = self.transfer(plc, "upload empty.csv --output back.csv --verify")
            self.assertEqual((["uploaded 8 values, verified"], []), (run.lines, run.errors))
            self.assertEqual(self.text, (self.folder / "back.csv").read_text(encoding="utf-8"))
            self.assertIn(",float32:high,\n", empty.read_text(encoding="utf-8"))
            self.assertEqual([{"recipe": "uploaded", "values": 8, "verified": False}],
                             self.objects(f"recipe upload own.csv --link {plc.link}"))
            self.assertEqual(self.text, own.read_text(encoding="utf-8"))
        self.assertEqual(MEMORY, plc.memory())

    @on_each_link
    def test_recipe_longer_than_one_request(self, kind):
        """37449 = 0b1001001001001001: every third of 200 bits, from bit 0 of register 3005 on. Bits
        192, 195 and 198 are bits 0, 3 and 6 of the register 12 behind."""
        self.file("long.csv", long_recipe())
        with self.plc(kind) as plc:
            self.assertEqual(["downloaded 600 values, verified"],
                             self.transfer(plc, "download long.csv --verify").lines)
        wanted = {f"1 MW {3500 + i} {word(i)}" for i in range(WORDS)}
        self.assertLessEqual(wanted | {"1 MW 3005 37449", "1 MW 3017 73"}, set(plc.memory()))

    @on_each_link
    def test_verification_names_values_that_differ(self, kind):
        """Two words move by themselves: they have other values by the time they are read back."""
        with self.plc(kind, "--stations 1-2 --turnaround-us 5000 "
                      "--signal 1:QW:20:counter:1:500 --signal 1:MW:3060:counter:1:500") as plc:
            run = self.transfer(plc, "download recipe.csv --verify", 6)
            self.assertEqual((2, ["kakb-host: 2 of 8 values differ"]), (len(run.lines), run.errors))
            self.assert_matches(run.lines, r"^level \(MW120\) is .*, not 21\.5$",
                                r"^speed \(QW40\) is [0-9]+, not -300$")
            objects = self.objects(f"recipe download recipe.csv --verify --link {plc.link}", 6)
            self.assertEqual([("level", "MW120"), ("speed", "QW40")],
                             [(found["name"], found["address"]) for found in objects[:2]])
            self.assertEqual(-300, int(objects[1]["expected"]))
            self.transfer(plc, "download recipe.csv")
            # A recipe that differs is not written to its file.
            self.transfer(plc, "upload recipe.csv --verify", 6)
            self.assertEqual(self.text, self.path.read_text(encoding="utf-8"))

    @on_each_link
    def test_failed_transfer_names_the_reason(self, kind):
        with self.plc(kind, "--stations 1-2") as plc:
            for output in (self.folder / "none" / "x.csv", self.folder):
                self.fails(1, f"recipe upload recipe.csv --output {output} --link {plc.link}",
                           f"cannot write {output}: ")
        for fault, status, limit, sentence in (
                ("--exception 1 --exception-code 2 --fault-exchanges 2", 5, 30000,
                 r"MW ?(120|3060)\b.*refused by the PLC: illegal address"),
                ("--silent 2", 4, 300, r"QW40 of station 2: not sent: station 2 is silent$")):
            with self.plc(kind, f"--stations 1-2 {fault}") as plc:
                self.fails(status, f"recipe download recipe.csv --link {plc.link} "
                           f"--timeout-ms {limit}", sentence,
                           within_ms=limit // 2 if status == 5 else None)

    def test_own_simulated_plc_has_every_station_of_the_recipe(self):
        self.assertEqual(["downloaded 8 values, verified"],
                         self.host("recipe download recipe.csv --verify").lines)


class SpreadsheetRecipes(CommandLineTest):
    """Recipes with semicolons and decimal commas."""

    def test_semicolons_and_decimal_commas_come_back(self):
        """21.5 is 0x41AC0000 in IEEE 754."""
        lines = ["\ufeffname;station;area;address;type;value", "level;1;MW;120;float32:high;21,5",
                 "mode;1;MW;300;uint16;7", ""]
        self.file("recipe.csv", "\r\n".join(lines))
        with self.plc("pty") as plc:
            self.host(f"recipe download recipe.csv --verify --link {plc.link}")
            self.host(f"write MW300=8 MW120:float32:high=-0.75 --link {plc.link}")
            self.host(f"recipe upload recipe.csv --link {plc.link}")
            lines[1] = lines[1].replace("21,5", "-0,75")
            lines[2] = lines[2].replace(";7", ";8")
            self.assertEqual("\r\n".join(lines).encode(),
                             (self.folder / "recipe.csv").read_bytes())
            self.file("tags.csv", "name;station;area;address;type\nlevel;1;MW;120;float32:high\n")
            self.assertEqual(["level (MW120) = -0.75"],
                             self.host(f"read --tags tags.csv --link {plc.link}").lines)


class UnusableRecipes(CommandLineTest):
    """Mistakes end before anything is written."""

    def test_every_bad_line_is_reported(self):
        self.file("recipe.csv", table([
            ("good", 1, "MW", 100, "uint16", 1), ("odd", 1, "QW", 41, "int16", -300),
            ("input", 1, "IX", "30.0", "bool", 1), ("value", 1, "MX", "30.1", "bool", 2),
            ("large", 1, "MW", 102, "uint16", 65536), ("none", 1, "MW", 104, "uint16", "")],
            HEADER + ",value"))
        run = self.host("recipe download recipe.csv", 1)
        self.assertEqual(5, len(run.errors), run)
        self.assert_matches(
            run.errors, "^kakb-host: recipe.csv: line 3: QW41: odd: ",
            "^kakb-host: recipe.csv: line 4: area IX is read-only$",
            "^kakb-host: recipe.csv: line 5: 2 does not fit bool: 0, 1, true or false$",
            "^kakb-host: recipe.csv: line 6: 65536 does not fit uint16: 0 to 65535$",
            "^kakb-host: recipe.csv: line 7: the value is missing$")

    def test_unusable_recipe_says_why(self):
        self.fails(1, "recipe download none.csv")
        for rows, sentence in (
                ([], "."),
                ([("a", 1, "MW", 0, "uint32", 1), ("b", 1, "MW", 2, "uint16", 1)],
                 "a and b share a word of station 1"),
                ([("word", 1, "MW", 0, "uint16", 1), ("bit", 1, "MX", "0.0", "bool", 0)],
                 "^kakb-host: word and bit share a bit of station 1$"),
                ([("bit", 1, "MX", "12.9", "bool", 1)],
                 r"^kakb-host: recipe\.csv: line 2: MX12\.9: the bit is 0 to 7; "
                 r"did you mean MX13\.1\?$"),
                ([("bit", 1, "QX", "375.0", "bool", 1)],
                 "^kakb-host: recipe.csv: line 2: QX 375.0 and above can be read but not written: ")):
            self.file("recipe.csv", table(rows, HEADER + ",value"))
            self.fails(1, "recipe download recipe.csv", sentence)
