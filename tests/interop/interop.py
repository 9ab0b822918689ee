#!/usr/bin/python3
"""Sends ksaml's requests to real identity providers, reads their responses, and prints a table.

usage: interop.py [--update] KSAML FOLDER PROVIDER...

A provider is a program that takes jobs as lines of JSON and writes what it read in the request and its
response, or why it refused. FOLDER gets keys, metadata, logs and messages. as_is.txt keeps what each
provider says to requests without --standard; --update writes it anew.
"""
import base64
import json
import os
import re
import signal
import subprocess
import sys
import time
import urllib.parse
import zlib

HERE = os.path.dirname(os.path.abspath(__file__))
STATUS = "urn:oasis:names:tc:SAML:2.0:status:"
RESOURCE = "https://harbour-tv.example/live"


def content(name):
    """What a file beside this one contains."""
    with open(os.path.join(HERE, name)) as file:
        return file.read()


SETUP = json.loads(content("setup.json"))
# Each provider: its adapter, a command that succeeds where it is installed, how it takes each kind of request, and
# the outcomes that it does not have. What is left out here docs/providers.md explains.
PROVIDERS = {each["name"]: each for each in json.loads(content("providers.json"))}
# Each case: the request, with options of ksaml; the outcome and the signatures that the provider is told; what
# ksaml says when it verifies the response.
CASES = json.loads(content("cases.json"))


def run(*command):
    return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)


def write(path, text):
    with open(path, "w") as file:
        file.write(text)
    return path


def differences(wanted, found):
    return [f"{key} is {found.get(key)!r}, not {value!r}" for key, value in wanted.items()
            if found.get(key) != value]


def value_in(url):
    return re.search(r"SAML(?:Request|Response)=([^&]*)", url)[1]


def xml_of(message):
    """The XML text in a URL, in base64, deflated or not, or in a SOAP envelope."""
    if message.startswith("http"):
        message = urllib.parse.unquote(value_in(message))
    if not message.startswith("<"):
        data = base64.b64decode(message)
        message = (data if data.startswith(b"<") else zlib.decompress(data, -15)).decode()
    soap = re.match(r"(.*<(?:[\w-]+:)?Body[^>]*>)\s*(<[^\s>]+)([^>]*)(>.*)</(?:[\w-]+:)?Body>", message, re.S)
    if not soap:
        return message
    around, tag, attributes, rest = soap.groups()  # the message's prefixes may be declared around it
    declared = re.findall(r'(xmlns[\w:-]*)(="[^"]*")', around)
    return tag + attributes + "".join(f" {a}{b}" for a, b in declared if a + "=" not in attributes) + rest


class Provider:
    def __init__(self, name):
        self.name, self.process, self.transports = name, None, PROVIDERS[name]["transports"]

    def result(self, job):
        if not self.process:
            command = [os.path.join(HERE, each) if "." in each[-4:] else each for each in PROVIDERS[self.name]["command"]]
            with open(f"{self.name}.log", "w") as log:
                self.process = subprocess.Popen([*command, self.name], stdin=subprocess.PIPE,
                                                stdout=subprocess.PIPE, stderr=log, text=True)
        self.process.stdin.write(json.dumps(job) + "\n")
        self.process.stdin.flush()
        line = self.process.stdout.readline()
        return json.loads(line) if line else {"refused": "its process ended with " + self.stop()}

    def stop(self):
        if self.process:
            self.process.stdin.close()
            status, self.process = self.process.wait(), None
            return signal.Signals(-status).name if status < 0 else f"status {status}: see {self.name}.log"


class Client:
    """What asks a provider, and the subject of its last sign-in there."""

    def __init__(self, ksaml, provider):
        self.ksaml, self.provider = ksaml, provider
        self.subject = os.path.join(HERE, "../fixtures/answer.xml")
        self.user, self.session = "t-58f20c7be1", "s-20260115-0042"

    def ask(self, kind, options, outcome, signed, standard=True):
        """The job, what the provider should read in it, and its result."""
        asks = SETUP["channel" if kind in ("attributes", "authz") else "issuer"]
        arguments = {
            "authn": ["--issuer", asks, "--provider-name", "Harbour"],
            "attributes": ["--channel", asks, "--attribute", "HouseholdID", "--attribute", "Language"],
            "authz": ["--channel", asks, "--resource", RESOURCE],
            "logout": ["--issuer", asks, "--session-index", self.session]}[kind]
        if kind in ("attributes", "authz"):
            arguments += ["--subject-from", self.subject]
        if standard:
            arguments += ["--standard", "--destination", SETUP["url"]]
            arguments += {"authn": ["--acs-url", SETUP["acs"]],
                          "logout": ["--name-id-from", self.subject]}.get(kind, [])
        arguments += {"xml": [], "soap": ["--soap"], "post": ["--base64"],
                      "redirect": ["--redirect", SETUP["url"]]}[self.provider.transports[kind]]
        identifier = ""
        # Words on the bare UUID of a logout request depend on its first character.
        while not identifier or kind == "logout" and not standard and identifier[0].isalpha():
            message = run(self.ksaml, "request", kind, *arguments, *options).stdout.strip()
            identifier = re.search(r'\bID="([^"]+)"', xml_of(message))[1]
        job = {"kind": kind, "message": message, "outcome": outcome, "signed": signed,
               "user": SETUP["user"] if kind == "authn" else self.user, "attributes": SETUP["attributes"]}
        result = self.provider.result(job)
        wanted = {"id": identifier, "issuer": asks, "passive": "--passive" in options,
                  "force": "--force-authn" in options, "acs": SETUP["acs"] if standard else None,
                  "policy": SETUP["name_format"], "subject": self.user, "session": [self.session],
                  "attributes": ["HouseholdID", "Language"], "resource": RESOURCE, "actions": ["Play"]}
        unread = differences({key: wanted[key] for key in result.get("read", ())}, result.get("read"))
        return job, wanted, result, [result["refused"]] if "refused" in result else unread

    def read(self, path):
        found = json.loads(run(self.ksaml, "read", "--json", path).stdout)
        name = (found["subject"] or {}).get("nameIdentifier") or {}
        return found | {
            "user": name.get("value"), "assertions": found["assertions"] or 0,
            "status": found["statusCodes"][-1:],  # nothing depends on when a message was made
            "unreadDates": [each for each in found["unreadDates"] if each["attribute"] != "IssueInstant"]}

    def verdict(self, kind, message, wanted):
        """What ksaml says when it verifies, and its explanation."""
        options = ["--certificate", "cert.pem", "--provider", SETUP["idp"], "--audience", wanted["issuer"],
                   "--acs-url", SETUP["acs"], "--in-response-to", wanted["id"]]
        if kind in ("attributes", "authz"):
            options += ["--query-about", self.user]
        said = run(self.ksaml, "read", "--json", *options, write("message", message)).stdout
        verification = json.loads(said)["verification"] if said else {"verdict": None, "explanation": "not read"}
        return verification["verdict"], verification["explanation"]


def wanted_response(asked, told):
    kind, outcome = told["kind"], told["outcome"]
    wanted = {"accepted": True, "inResponseTo": asked["id"], "signed": told["signed"], "unreadDates": [],
              "encryptedAssertions": 0, "selectedProvider": SETUP["idp"]}
    if outcome not in ("Success", "Permit", "Deny"):
        return wanted | {"assertions": 0, "status": [STATUS + outcome],
                         "expectedAction": 2 if outcome == "NoPassive" else 0}
    wanted |= {"status": [STATUS + "Success"], "expectedAction": 1}
    if kind == "logout":
        return wanted | {"root": "LogoutResponse"}
    wanted |= {"assertions": 1, "user": told["user"], "audiences": [asked["issuer"]]}
    if kind == "authz":
        return wanted | {"decisions": [{"resource": RESOURCE, "decision": outcome, "actions": ["Play"]}]}
    signed_in = {"hasValidAuthentication": True, "recipient": SETUP["acs"]} if kind == "authn" else {}
    return wanted | {"attributes": told["attributes"]} | signed_in


def tampered(message, told):
    """The response with one value changed that matters."""
    xml = xml_of(message)
    if told["kind"] == "authz":
        return xml.replace('"Permit"', '"Deny"') if '"Permit"' in xml else xml.replace('"Deny"', '"Permit"')
    if "Assertion" in xml:
        return xml.replace(f">{told['user']}<", ">eve.example<")
    changed = re.sub(r'(status:)\w+("/>)', r"\1PartialLogout\2", xml, count=1)
    if "&Signature=" not in message:
        return changed
    deflated = zlib.compress(changed.encode(), wbits=-15)
    return message.replace(value_in(message), urllib.parse.quote(base64.b64encode(deflated), safe=""))


def row(client, case):
    """The cells of one row of the table, and what is wrong."""
    name, kind, outcome, verdict = (case[each] for each in ("name", "kind", "outcome", "verdict"))
    if kind not in client.provider.transports or outcome in PROVIDERS[client.provider.name]["cannot"]:
        return ["-"] * 5, []
    told, asked, result, unread = client.ask(kind, case["options"], outcome, case["signed"])
    if "refused" in result:
        return ["NO"] * 5, unread
    if result["response"] is None:
        return ["NO" if unread else "yes"] + ["-"] * 4, unread
    told |= result.get("told", {})
    path = write(re.sub(r"\W+", "-", f"{client.provider.name}-{name}"), result["response"])
    found = client.read(path)
    said, words = client.verdict(kind, result["response"], asked)
    changed = tampered(result["response"], told)
    refusal, reason = client.verdict(kind, changed, asked)
    caught = changed != xml_of(result["response"]) and refusal == "refused" and "text was changed" in reason
    wrong = [unread, [] if found["accepted"] else ["not accepted"],
             differences(wanted_response(asked, told), found),
             [] if verdict == said else [f"verified: {said}: {words}"],
             [] if caught else [f"verified, tampered: {refusal}: {reason}"]]
    if name == "authn":
        client.subject, client.user, client.session = path, found["user"], found["authenticationSessionId"]
    return ["NO" if each else "yes" for each in wrong], sum(wrong, [])


def as_is(client):
    """What the provider says to the library's own text of each kind, a line each."""
    for kind in client.provider.transports:
        outcome = "Permit" if kind == "authz" else "Success"
        _, asked, result, wrong = client.ask(kind, [], outcome, ["Response"], standard=False)
        said = ("refused: " if "refused" in result else "") + ("; ".join(wrong) or "understood")
        for word, value in (("ID", asked["id"]), ("SESSION", client.session), ("SUBJECT", client.user)):
            said = said.replace(value, word)
        yield f"{client.provider.name}, {kind}: {said}\n"


def set_up(folder):
    os.makedirs(folder, exist_ok=True)
    os.chdir(folder)
    run("openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "2", "-subj", "/CN=interop",
        "-keyout", "key.pem", "-out", "cert.pem")
    write("setup.json", json.dumps(SETUP))
    with open("cert.pem") as file:
        certificate = "".join(file.read().split("\n")[1:-2])
    for name, role, url in (("idp", "idp", "url"), ("issuer", "sp", "acs"), ("channel", "sp", "acs")):
        metadata = content(role + ".xml").format(entity=SETUP[name], url=SETUP[url], certificate=certificate)
        write(name + ".xml", metadata)


def compare(said, names, update):
    """Differences between what was said and what as_is.txt keeps of these providers."""
    path = os.path.join(HERE, "as_is.txt")
    lines = content("as_is.txt").splitlines(keepends=True)
    kept = [line for line in lines if line.split(",")[0] in names]
    if update:
        write(path, "".join([line for line in lines if line not in kept] + said))
        return []
    return [("new: " if line in said else "gone: ") + line for line in said + kept if (line in said) != (line in kept)]


def main():
    arguments = [each for each in sys.argv[1:] if each != "--update"]
    ksaml, folder, names = os.path.abspath(arguments[0]), arguments[1], arguments[2:]
    os.environ["PATH"] += ":" + os.path.dirname(ksaml)
    os.environ["PYTHONDONTWRITEBYTECODE"] = "1"  # the source tree stays as it is
    missing = [name for name in names if run("env", *PROVIDERS[name]["installed"]).returncode]
    if missing:
        print("Skipped: not installed here:", *missing)
        return 77
    set_up(folder)
    failures, said = 0, []
    print(f"{'provider':14}{'message':25}understood accepted   right      verified   tampered refused")
    for name in names:
        client, began = Client(ksaml, Provider(name)), time.monotonic()
        for case in CASES:
            cells, problems = row(client, case)
            print(f"{name:14}{case['name']:25}" + " ".join(f"{each:10}" for each in cells).rstrip())
            print("".join(f"    {problem}\n" for problem in problems), end="")
            failures += len(problems)
        said += as_is(client)
        client.provider.stop()
        print(f"{name:14}{time.monotonic() - began:.1f} s\n", flush=True)
    changed = compare(said, names, "--update" in sys.argv)
    print("".join(f"as_is.txt, {line}" for line in changed) + f"{failures + len(changed)} failures")
    return 1 if failures or changed else 0


if __name__ == "__main__":
    sys.exit(main())
