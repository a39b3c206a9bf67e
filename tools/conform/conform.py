"""Does a service work with the agent? conform.py URL [OPTION…]: a line a rule, status 1 when one fails.

The session token comes from the environment, TOLMAR_SESSION_TOKEN. Asks and reports as the device of --device would.
"""
import argparse
import datetime
import http.client
import json
import os
import pathlib
import re
import sys
import time
import zlib
from email.utils import parsedate_to_datetime

from protocol import Protocol
from service import TIMEOUT_SECONDS, Service, claims_of

BODY_CAPACITY = 2048  # UTF-16 units, a terminator among them
MAX_ADDRESS, MAX_SEGMENT = 2200, 260  # characters; what the platform's download service takes
MAX_FETCH = 64 << 20  # bytes; a larger file is not fetched here
RULES = []


class Broken(Exception):
    """The rule does not hold; says why."""


class Skipped(Exception):
    """The rule could not be looked at; says why."""


def rule(name, text):
    def register(function):
        RULES.append((name, text, function))
        return function
    return register


def need(condition, why):
    if not condition:
        raise Broken(why)


class Trial:
    """What the rules have found out so far; a later rule builds on it."""

    def __init__(self, service, protocol, options):
        self.service, self.protocol, self.options = service, protocol, options
        self.token = self.titles = self.files = self.fetched = None
        self.module = {}

    def known(self, name):
        value = getattr(self, name)
        if not value:
            raise Skipped(f"no {name} to be had")
        return value

    def answer(self, kind, parameters):
        """@return the result of a request that has to succeed."""
        reply = self.service.ask(kind, parameters, self.known("token"))
        need(reply.status in (200, 201), f"{kind}: status {reply.status}")
        need(reply.json is not None, f"{kind}: the body is not JSON")
        self.judge("POST", f"/mp/zlt/v2/{kind}", reply)
        need(reply.json["result"]["code"] == 0, f"{kind}: code {reply.json['result']['code']}")
        return reply.json["result"]

    def judge(self, method, path, reply):
        flaws = self.protocol.flaws_of_reply(self.protocol.operation(method, path), 200, reply.headers, reply.json)
        need(not flaws, "; ".join(flaws[:3]))

    def parameters(self, kind, **more):
        """Those that belong to such a request, but for `more`."""
        values = {}
        if not kind.endswith("Progress"):
            values["deviceId"] = self.service.device
        if not kind.lower().endswith("entitlement"):
            values |= self.module or {"l1FruPn": "T-1", "moduleFruPn": "M-1"}
        if kind.endswith("Progress"):
            values |= {"action": 0, "message": "", "custDeviceDate": datetime.datetime.now().strftime("%Y-%m-%d %H:%M:%S")}
        if kind == "downloadProgress":
            values |= {"fileName": "package.cab", "progress": 0}
        return values | more

    def report(self, kind, **more):
        return self.answer(kind, self.parameters(kind, **more))

    def file_list(self, module=None):
        """@param module: another than the one whose files are looked at."""
        module = module or self.known("module")
        return self.answer("downloadRequest", self.parameters("downloadRequest", **module))["fileList"]

    def smallest(self):
        """The file that is fetched: the smallest that has a byte."""
        files = [file for file in self.known("files") if 0 < file["size"] <= MAX_FETCH]
        if not files:
            raise Skipped("no file of 1 byte to 64 MiB")
        return min(files, key=lambda file: file["size"])

    def fetch(self, method="GET", change=lambda url: url, **headers):
        """The smallest file at a new address. @return the file's entry and the reply."""
        self.files = self.file_list()
        file = self.smallest()
        return file, self.service.exchange(method, change(file["downloadUrl"]), headers)


@rule("token.exchange", "the session token is exchanged for a JWT with its end (`exp`)")
def _(trial):
    reply = trial.service.exchange_token(trial.service.session_token)
    need(reply.status == 200, f"status {reply.status}")
    trial.judge("POST", "/token", reply)
    try:
        claims = claims_of(reply.json["jwt"])
        life = claims["exp"] - max(claims.get("iat", 0), date_of(reply))
    except (ValueError, KeyError, TypeError) as error:
        raise Broken(f"not a JWT with `exp`: {type(error).__name__}") from None
    trial.token = reply.json["jwt"]
    need(life > 60, f"it lasts {life:.0f} s; the host renews a minute before the end")


def date_of(reply):
    return parsedate_to_datetime(reply.headers["Date"]).timestamp() if "Date" in reply.headers else time.time()


@rule("token.refusal", "another session token gets none")
def _(trial):
    reply = trial.service.exchange_token("not " + trial.service.session_token)
    need(400 <= reply.status < 500, f"status {reply.status}")


@rule("hasEntitlement", "answered as described")
def _(trial):
    trial.answer("hasEntitlement", trial.parameters("hasEntitlement"))


@rule("entitlement", "answered as described, with at least one title to go on with")
def _(trial):
    trial.titles = trial.answer("entitlement", trial.parameters("entitlement"))["swList"]
    if not trial.titles:
        raise Skipped("the device is entitled to nothing; take one that is")


@rule("entitlement.repeat", "the same question has the same answer")
def _(trial):
    titles = trial.known("titles")
    need(trial.answer("entitlement", trial.parameters("entitlement"))["swList"] == titles, "the second answer differs")


@rule("downloadRequest", "each module of each title has its files, of different names in a title")
def _(trial):
    for title in trial.known("titles"):
        names = []
        for module in title.get("moduleList") or []:
            asked = {"l1FruPn": title["l1FruPn"], "moduleFruPn": module["moduleFruPn"]}
            files = trial.file_list(asked)
            names += [file["name"].lower() for file in files]
            if files:
                trial.module, trial.files = asked, files
        need(len(set(names)) == len(names), f"{title['l1FruPn']}: two files have one name")


@rule("downloadRequest.refusal", "a module that does not exist is refused: a code other than 0, or a status")
def _(trial):
    unknown = trial.parameters("downloadRequest", l1FruPn="none", moduleFruPn="none")
    reply = trial.service.ask("downloadRequest", unknown, trial.known("token"))
    need(reply.status >= 400 or reply.code not in (0, None), f"status {reply.status}, code {reply.code}")


@rule("request.token", "each request with no token, or with an altered one, is answered 401")
def _(trial):
    token = trial.known("token")
    middle = len(token) // 2
    altered = token[:middle] + ("A" if token[middle] != "A" else "B") + token[middle + 1:]
    for kind in ("hasEntitlement", "entitlement", "downloadRequest", "downloadProgress", "installProgress"):
        for given in ("", altered):
            status = trial.service.ask(kind, trial.parameters(kind), given).status
            need(status == 401, f"{kind}: status {status}")


@rule("request.body", "a body that is not JSON is answered 400, as of a part number with a quotation mark")
def _(trial):
    raw = '{"type":"downloadRequest","parameters": { "deviceId":"%s","l1FruPn":"a"b","moduleFruPn":"c"}}'
    status = trial.service.ask("downloadRequest", None, trial.known("token"), raw % trial.service.device).status
    need(status == 400, f"status {status}")


@rule("downloadProgress", "each action is taken, twice the same too")
def _(trial):
    for action in (0, 0, -1, 3, 4):
        trial.report("downloadProgress", action=action)


@rule("installProgress", "each action is taken, twice the same too")
def _(trial):
    for action in (0, 0, -1, 1, 2):
        trial.report("installProgress", action=action)


@rule("report.progress", "a share beyond 0 to 100 is taken: an unknown length gives the least 32-bit number")
def _(trial):
    for progress in (-2**31, 101):
        trial.report("downloadProgress", progress=progress)


@rule("report.texts", "odd texts are taken")
def _(trial):
    for text in ("Umlaute äöü ß", "漢字 한글 עברית", "\U0001F4E6 & <b> %20 'a' ; $(x)", "C:/a/b  c", ""):
        trial.report("installProgress", message=text)


@rule("report.length", "a body as long as the agent makes them (2,047 UTF-16 units) is taken")
def _(trial):
    body = {"type": "installProgress", "parameters": trial.parameters("installProgress")}
    body["parameters"]["message"] = "ü" * (BODY_CAPACITY - 1 - len(json.dumps(body)))
    raw = json.dumps(body, ensure_ascii=False)
    reply = trial.service.ask("installProgress", None, trial.known("token"), raw)
    need(reply.status in (200, 201) and reply.code == 0, f"status {reply.status}")


@rule("address.form", "an address is https (or of a loopback host), of 2,200 characters at most, 260 between slashes")
def _(trial):
    for file in trial.known("files"):
        url = file["downloadUrl"]
        need(re.match(r"https://|http://(localhost|127\.0\.0\.1|\[::1\])[:/]", url), f"{file['name']}: its scheme")
        need(len(url) <= MAX_ADDRESS, f"{file['name']}: {len(url)} characters")
        need(all(len(part) <= MAX_SEGMENT for part in url.partition("?")[0].split("/")), f"{file['name']}: a part is too long")


@rule("file.head", "HEAD, without a token, tells the length that the file list has")
def _(trial):
    file, reply = trial.fetch("HEAD")
    need(reply.status == 200, f"status {reply.status}")
    need(reply.headers.get("Content-Length") == str(file["size"]), f"Content-Length {reply.headers.get('Content-Length')}, size {file['size']}")


@rule("file.get", "GET, without a token, gives bytes of the announced length and CRC")
def _(trial):
    file, reply = trial.fetch()
    need(reply.status == 200, f"status {reply.status}")
    need(reply.headers.get("Content-Length") == str(len(reply.body)) == str(file["size"]), f"{len(reply.body)} bytes, size {file['size']}")
    trial.fetched = reply.body
    need(zlib.crc32(reply.body) == int(file["crc"], 16), f"CRC {zlib.crc32(reply.body):08x}, the list has {file['crc']}")


@rule("file.range", "Range gives 206 and that part: the first byte, the rest behind it, the last byte")
def _(trial):
    whole = trial.known("fetched")
    last = len(whole) - 1
    for begin, end in ((0, 0), (min(1, last), None), (last, last)):
        _, reply = trial.fetch(Range=f"bytes={begin}-{'' if end is None else end}")
        until = last if end is None else end
        need(reply.status == 206, f"status {reply.status}")
        need(reply.headers.get("Content-Range") == f"bytes {begin}-{until}/{len(whole)}", f"Content-Range {reply.headers.get('Content-Range')}")
        need(reply.body == whole[begin:until + 1], "other bytes than those of the whole file")


@rule("file.range.end", "a range behind the end is answered 416")
def _(trial):
    _, reply = trial.fetch(Range=f"bytes={len(trial.known('fetched'))}-")
    need(reply.status == 416, f"status {reply.status}")


@rule("address.signature", "an altered address is answered 403")
def _(trial):
    _, reply = trial.fetch(change=lambda url: url[:-8] + ("A" if url[-8] != "A" else "B") + url[-7:])
    need(reply.status == 403, f"status {reply.status}")


@rule("address.renewal", "each file list has other addresses, and an older one still does")
def _(trial):
    trial.files = trial.file_list()
    older = trial.smallest()["downloadUrl"]
    _, reply = trial.fetch()
    need(trial.smallest()["downloadUrl"] != older, "it has the same: the agent gives a file up whose address expires")
    need(reply.status == trial.service.exchange("GET", older).status == 200, "not both can be fetched")


@rule("address.expiry", "an address whose time is over is answered 403, and a new one is good (--address-seconds)")
def _(trial):
    if trial.options.address_seconds is None:
        raise Skipped("--address-seconds tells how long to wait")
    trial.files = trial.file_list()
    old = trial.smallest()["downloadUrl"]
    time.sleep(trial.options.address_seconds + 1)
    status = trial.service.exchange("GET", old).status
    need(status == 403, f"status {status} after {trial.options.address_seconds + 1} s")
    need(trial.fetch()[1].status == 200, "the new one is not")


@rule("reply.time", f"every reply came within {TIMEOUT_SECONDS} s")
def _(trial):
    seconds, what = trial.service.slowest
    need(seconds < TIMEOUT_SECONDS, f"{what}: {seconds:.1f} s")


def verdict(function, trial):
    """@return the word of the report, and why."""
    try:
        function(trial)
        return "ok", ""
    except Skipped as why:
        return "skipped", str(why)
    except Broken as why:
        return "FAILED", str(why)
    except (OSError, http.client.HTTPException, ValueError, IndexError) as error:  # The latter: an address is none.
        return "FAILED", f"no reply: {type(error).__name__}: {error}"


def main():
    parser = argparse.ArgumentParser(prog="./dev conform", description="Does a service work with the agent?")
    parser.add_argument("url", help="the base URL, as devices have it")
    parser.add_argument("--device", default="PC-0001", help="the device to be: a test device that is entitled to a title")
    parser.add_argument("--token-url", help="default: URL/token")
    parser.add_argument("--ca", help="a root to trust besides none other, PEM")
    parser.add_argument("--address-seconds", type=int, help="how long a file's address is in force")
    options = parser.parse_args()
    session_token = os.environ.get("TOLMAR_SESSION_TOKEN")
    if not session_token:
        parser.error("the environment has no TOLMAR_SESSION_TOKEN")
    service = Service(options.url, options.token_url or options.url.rstrip("/") + "/token", session_token, options.device, options.ca)
    protocol = Protocol(pathlib.Path(__file__).resolve().parents[2] / "docs" / "protocol.yaml")
    trial = Trial(service, protocol, options)
    words = []
    for name, text, function in RULES:
        word, why = verdict(function, trial)
        words.append(word)
        print(f"{word:8}{name:25}{text}" + (f"\n{'':8}{'':25}{why}" if why else ""), flush=True)
    print(f"{words.count('ok')} rules hold, {words.count('FAILED')} fail, {words.count('skipped')} skipped; "
          f"slowest reply: {service.slowest[1]}, {1000 * service.slowest[0]:.0f} ms")
    sys.exit("FAILED" in words)


main()
