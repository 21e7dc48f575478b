"""The token: what needs it, how a browser and a program show it, and what guessing is worth."""

import signal
import time

from httpClient import own_address
from stationProgram import StationTest

TOKEN = "correct-horse-battery"
GUESSES = 10
MOMENT_MS = 1500  # in which the station hangs up


def bearing(token):
    """The headers of a program that has the token."""
    return {"Authorization": f"Bearer {token}"}


class HttpToken(StationTest):
    """A station with a token."""

    def setUp(self):
        super().setUp()
        self.file("token", TOKEN + "\n").chmod(0o600)
        self.served = self.station("--token-file token --allow-writes")

    def logged_in(self, **headers):
        """The headers of a browser after its login."""
        answer = self.served.post("/api/v1/login", {"token": TOKEN}, headers)
        self.assertEqual(200, answer.status, answer)
        return {"Cookie": answer.headers["set-cookie"].split(";")[0]}

    def test_everything_needs_it(self):
        for path in ("/api/v1/station", "/api/v1/values", "/api/v1/events", "/api/v1/history",
                     "/api/v1/frames", "/metrics", "/healthz", "/main.js", "/none"):
            with self.subTest(path=path):
                answer = self.served.get(path)
                self.assertEqual((401, ["error"], "Bearer"), (
                    answer.status, list(answer.json), answer.headers["www-authenticate"]))
        for path in ("/api/v1/write", "/api/v1/recipes/download"):
            with self.subTest(path=path):
                self.assertEqual(401, self.served.post(path, {}).status)

    def test_a_browser_without_it_is_shown_where_to_log_in(self):
        answer = self.served.get("/")
        self.assertEqual((303, "/login.html"), (answer.status, answer.headers["location"]))
        self.assertEqual(200, self.served.get("/login.html").status)

    def test_a_program_bears_it(self):
        for headers in (bearing(TOKEN), {"Authorization": f"bearer  {TOKEN} "}):
            with self.subTest(headers=headers):
                self.assertEqual(200, self.served.get("/api/v1/values", headers).status)

    def test_no_other_text_is_it(self):
        for token in ("", "x", TOKEN[:-1], TOKEN + "x", TOKEN.upper(), TOKEN + "%00"):
            with self.subTest(token=token):
                self.assertEqual(401, self.served.get("/api/v1/values",
                                                      bearing(token)).status)
        for value in (TOKEN, f"Basic {TOKEN}", f"Bearer{TOKEN}"):
            with self.subTest(value=value):
                self.assertEqual(401, self.served.get("/api/v1/values",
                                                      {"Authorization": value}).status)

    def test_a_login_gives_a_cookie_for_this_station_alone(self):
        answer = self.served.post("/api/v1/login", {"token": TOKEN})
        name, *attributes = answer.headers["set-cookie"].split("; ")
        self.assertEqual({"HttpOnly", "SameSite=Strict", "Path=/"},
                         {word for word in attributes if not word.startswith("Max-Age=")})
        self.assertNotIn(TOKEN, name)
        for headers in ({"Cookie": name}, {"Cookie": f"other=1; {name}; more=x"}):
            with self.subTest(headers=headers):
                self.assertEqual(200, self.served.get("/api/v1/values", headers).status)
                self.assertEqual(200, self.served.get("/metrics", headers).status)
        key = name.split("=")[0]
        for cookie in (f"{key}=", f"{key}=x", name[:-1], f"x{name}", f"{key}={TOKEN}"):
            with self.subTest(cookie=cookie):
                self.assertEqual(401, self.served.get("/api/v1/values",
                                                      {"Cookie": cookie}).status)

    def test_behind_tls_the_cookie_never_travels_without_it(self):
        answer = self.served.post("/api/v1/login", {"token": TOKEN}, {
            "Host": "panel.local", "Origin": "https://panel.local"})
        self.assertIn("; Secure", answer.headers["set-cookie"])

    def test_a_cookie_is_no_leave_for_another_sites_page(self):
        cookie = self.logged_in()
        for change, status in (({"Origin": "http://example.com"}, 403), ({"X-Kakb": None}, 403),
                               ({"Content-Type": "text/plain"}, 415)):
            with self.subTest(change=change):
                answer = self.served.post("/api/v1/write", {}, {**cookie, **change})
                self.assertEqual(status, answer.status)

    def test_a_cookie_outlives_the_station_and_ends_with_the_token(self):
        cookie = self.logged_in()
        self.served.end()
        again = self.station("--token-file token")
        self.assertEqual(200, again.get("/api/v1/values", cookie).status)
        again.end()
        self.file("token", "another-one\n")
        self.assertEqual(401, self.station("--token-file token").get(
            "/api/v1/values", cookie).status)

    def test_logout_takes_the_cookie_back(self):
        answer = self.served.post("/api/v1/logout", {}, self.logged_in())
        self.assertEqual(200, answer.status)
        self.assertIn("=; Path=/; Max-Age=0;", answer.headers["set-cookie"])

    def test_a_login_without_a_token_says_so(self):
        for body in (b"", b"[]", b"{", b"{}", b'{"token":1}', b'{"token":null}', b"\xff"):
            with self.subTest(body=body):
                answer = self.served.post("/api/v1/login", body)
                self.assertEqual((400, ["error"]), (answer.status, list(answer.json)))

    def test_guessing_through_a_proxy_on_this_machine_keeps_nobody_out(self):
        for place in range(3 * GUESSES):
            guess = bearing(f"guess {place}")
            self.assertEqual(401, self.served.get("/api/v1/values", guess).status)
        self.assertEqual(200, self.served.get("/api/v1/values", bearing(TOKEN)).status)
        self.logged_in()


class HttpGuesses(StationTest):
    """Another machine guesses the token."""

    def test_guessing_is_slow_and_nobody_who_is_logged_in_waits_for_it(self):
        address = own_address()
        if address is None:
            self.skipTest("this machine has no network")
        self.file("token", TOKEN).chmod(0o600)
        served = self.station("--listen 0.0.0.0:0 --token-file token")
        served.host = address
        cookie = {"Cookie": served.post("/api/v1/login", {"token": TOKEN}).headers[
            "set-cookie"].split(";")[0]}
        began = time.monotonic()
        for place in range(GUESSES):
            guess = served.post("/api/v1/login", {"token": f"guess {place}"}) if place % 2 \
                else served.get("/api/v1/values", bearing(f"guess {place}"))
            self.assertEqual(401, guess.status)
        for headers in (bearing("guess"), bearing(TOKEN)):
            answer = served.get("/api/v1/values", headers)
            self.assertEqual(429, answer.status)
            self.assertLessEqual(1, int(answer.headers["retry-after"]))
        self.assertEqual(429, served.post("/api/v1/login", {"token": TOKEN}).status)
        self.assertEqual(200, served.get("/api/v1/values", cookie).status)
        self.assertLess(time.monotonic() - began, 5, "the guesses came too slowly to show this")


class HttpTokenChange(StationTest):
    """The configuration is read again with another token."""

    def configure(self, token):
        """Writes a configuration with a token; None: without one."""
        self.file("station.toml", 'listen = "127.0.0.1:0"\n' + (
            'token_file = "token"\n' if token else "") + (
            f'[[link]]\nname = "plc"\nlink = "{self.simulator.link}"\ntags = "tags.csv"\n'))
        if token:
            self.file("token", token + "\n").chmod(0o600)

    def reload(self, token):
        """The station has read the configuration when this returns."""
        self.configure(token)
        self.served.process.send_signal(signal.SIGHUP)
        self.served.headers = {} if token is None else bearing(token)
        other = {"Authorization": "Bearer other"}
        self.served.await_that(lambda: self.served.get("/api/v1/values").status == 200 and (
            (self.served.get("/api/v1/values", other).status == 200) == (token is None)))

    def stream(self, path="/api/v1/events", headers=None):
        """An open stream."""
        return self.enterContext(self.served.events(path, headers))

    def ended(self, stream):
        """Whether the station hangs up; else a beat would come each second. Some may have been on
        their way."""
        asked = time.time() * 1000
        try:
            while stream.next("beat")["data"]["time"] < asked + MOMENT_MS:
                pass
        except (EOFError, ConnectionError):
            return True
        return False

    def test_a_stream_ends_with_the_right_to_it(self):
        self.tags("still")
        self.simulator = self.plc("tcp")
        self.configure(None)
        self.served = self.station("--config station.toml")
        without = self.stream()
        early = self.stream(headers=bearing(TOKEN))
        frames = self.stream("/api/v1/events?frames=plc")
        self.reload(TOKEN)
        for stream in (without, frames):
            self.assertTrue(self.ended(stream))
        early.next("beat")
        cookie = {"Cookie": self.served.post("/api/v1/login", {"token": TOKEN}).headers[
            "set-cookie"].split(";")[0], "Authorization": None}
        browser = self.stream(headers=cookie)
        browser.next("beat")
        self.reload("another-one")
        for stream in (early, browser):
            self.assertTrue(self.ended(stream))
        late = self.stream()
        self.reload(None)
        late.next("beat")
        late.next("beat")


class HttpWithoutToken(StationTest):
    """A station of this machine alone needs none."""

    def test_a_login_is_not_needed_and_sets_no_cookie(self):
        answer = self.station().post("/api/v1/login", {"token": "any"})
        self.assertEqual((200, None), (answer.status, answer.headers.get("set-cookie")))
