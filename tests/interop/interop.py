#!/usr/bin/python3
"""Sends ksaml's requests to real identity providers, reads their responses, and prints a table.

usage: interop.py [--update] KSAML VERIFY_THEN_READ FOLDER PROVIDER...

A provider is a program that takes jobs as lines of JSON, and writes what it read in the request and
its response, or why it refused. FOLDER gets keys, metadata, logs and messages. as_is.txt keeps what
providers say to requests without --standard; --update writes it anew.
"""
import base64
import json
import os
import re
import shutil
import signal
import subprocess
import sys
import time
import urllib.parse
import zlib

HERE = os.path.dirname(os.path.abspath(__file__))
AS_IS = os.path.join(HERE, "as_is.txt")
STATUS = "urn:oasis:names:tc:SAML:2.0:status:"
RESOURCE = "https://harbour-tv.example/live"
SETUP = {
    "idp": "https://idp.lakeside-cable.example/saml",
    "url": "https://idp.lakeside-cable.example/in",
    "issuer": "https://signin.harbour-tv.example",
    "channel": "HARBOUR",
    "acs": "https://signin.harbour-tv.example/acs",
    "name_format": "urn:oasis:names:tc:SAML:2.0:nameid-format:transient",
    "user": "mara.lindqvist",
    "attributes": {"username": ["mara.lindqvist"], "HouseholdID": ["H-4711"], "Language": ["sv", "en"]},
}
READER = {"authn": "xml", "attributes": "xml", "authz": "xml", "logout": "xml"}
SERVER = {"authn": "redirect", "attributes": "soap", "authz": "soap", "logout": "redirect"}

# The adapter, what has to be there for it, and how it takes each kind of request. Kinds that are left
# out, and the outcomes in CANNOT, the provider does not have: docs/providers.md says why.
PROVIDERS = {
    "schema": ("schema_reader.py", "xmllint", READER),
    "OpenSAML": ("opensaml_reader", "opensaml_reader", READER),
    "pysaml2": ("pysaml2_provider.py", "saml2", SERVER),
    "Lasso": ("lasso_provider.py", "lasso", SERVER),
    "SimpleSAMLphp": ("simplesamlphp_provider.py", "php", {"authn": "redirect", "logout": "redirect"}),
    "samlp": ("npm_providers.js", "node", {"authn": "redirect", "logout": "redirect"}),
    "samlify": ("npm_providers.js", "node", {"authn": "post", "logout": "post"}),
    "node-saml": ("npm_providers.js", "node", {"logout": "redirect"}),
}
CANNOT = [("samlify", "NoPassive"), ("samlify", "AuthnFailed"), ("samlify", "RequestDenied"),
          ("samlp", "NoPassive")]

# message, kind, options of ksaml, the outcome and the signatures that the provider is told, and what
# verify_then_read says: signed in, ask the subscriber, denied, logged out, or that nobody signed in.
CASES = [
    ("authn", "authn", [], "Success", ["Response"], 0),
    ("authn, assertion signed", "authn", [], "Success", ["Assertion"], 0),
    ("authn, both signed", "authn", [], "Success", ["Response", "Assertion"], 0),
    ("authn --passive", "authn", ["--passive"], "Success", ["Response"], 0),
    ("authn --force-authn", "authn", ["--force-authn"], "Success", ["Response"], 0),
    ("denied: NoPassive", "authn", ["--passive"], "NoPassive", ["Response"], 3),
    ("denied: AuthnFailed", "authn", [], "AuthnFailed", ["Response"], 4),
    ("denied: RequestDenied", "authn", [], "RequestDenied", ["Response"], 4),
    ("attributes", "attributes", [], "Success", ["Response"], "there is no authentication statement"),
    ("authz: Permit", "authz", [], "Permit", ["Response"], "there is no authentication statement"),
    ("authz: Deny", "authz", [], "Deny", ["Response"], "there is no authentication statement"),
    ("logout", "logout", [], "Success", ["LogoutResponse"], 5),
]
COLUMNS = ("understood", "accepted", "right", "verified", "tampered refused")


def run(*command):
    return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)


def write(path, text):
    with open(path, "w") as file:
        file.write(text)
    return path


class Provider:
    def __init__(self, name):
        self.name, self.process = name, None
        self.adapter, _, self.transports = PROVIDERS[name]

    def result(self, job):
        if not self.process:
            start = {".py": [sys.executable], ".js": ["node"]}.get(os.path.splitext(self.adapter)[1])
            command = [*start, os.path.join(HERE, self.adapter), self.name] if start else [self.adapter]
            with open(f"{self.name}.log", "w") as log:
                self.process = subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                                stderr=log, text=True)
        self.process.stdin.write(json.dumps(job) + "\n")
        self.process.stdin.flush()
        line = self.process.stdout.readline()
        return json.loads(line) if line else {"refused": "its process ended with " + self.stop()}

    def stop(self):
        if self.process:
            self.process.stdin.close()
            status, self.process = self.process.wait(), None
            return signal.Signals(-status).name if status < 0 else f"status {status}: see {self.name}.log"


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
    # The message's prefixes may be declared around it.
    around, tag, attributes, rest = soap.groups()
    declared = re.findall(r'(xmlns[\w:-]*)(="[^"]*")', around)
    return tag + attributes + "".join(f" {a}{b}" for a, b in declared if a + "=" not in attributes) + rest


def value_in(url):
    return re.search(r"SAML(?:Request|Response)=([^&]*)", url)[1]


class Client:
    """The side of ksaml and verify_then_read, and the subject of the last sign-in."""

    def __init__(self, ksaml, verify):
        self.ksaml, self.verify = ksaml, verify
        self.subject = {"file": write("subject.xml", SUBJECT), "user": SETUP["user"], "session": "_session-1"}

    def request(self, kind, options, transport, standard=True):
        """A request as it is sent, and what a provider should read in it."""
        asks = SETUP["channel" if kind in ("attributes", "authz") else "issuer"]
        arguments = {
            "authn": ["--issuer", asks, "--provider-name", "Harbour"],
            "attributes": ["--channel", asks, "--attribute", "HouseholdID", "--attribute", "Language"],
            "authz": ["--channel", asks, "--resource", RESOURCE],
            "logout": ["--issuer", asks, "--session-index", self.subject["session"]]}[kind]
        if kind in ("attributes", "authz"):
            arguments += ["--subject-from", self.subject["file"]]
        if standard:
            arguments += ["--standard", "--destination", SETUP["url"]]
            arguments += {"authn": ["--acs-url", SETUP["acs"]],
                          "logout": ["--name-id-from", self.subject["file"]]}.get(kind, [])
        sent = {"xml": [], "soap": ["--soap"], "post": ["--base64"], "redirect": ["--redirect", SETUP["url"]]}
        identifier = ""
        # A provider's words on the bare UUID of a logout request depend on its first character.
        while not identifier or kind == "logout" and not standard and identifier[0].isalpha():
            made = run(self.ksaml, "request", kind, *arguments, *options, *sent[transport])
            if made.returncode:
                sys.exit(f"interop.py: ksaml request {kind} {arguments} failed")
            message = made.stdout.strip()
            identifier = re.search(r'\bID="([^"]+)"', xml_of(message))[1]
        return message, {
            "id": identifier, "issuer": asks, "passive": "--passive" in options,
            "force": "--force-authn" in options, "acs": SETUP["acs"] if standard else None,
            "policy": SETUP["name_format"], "subject": self.subject["user"],
            "attributes": ["HouseholdID", "Language"], "resource": RESOURCE, "actions": ["Play"],
            "session": [self.subject["session"]]}

    def read(self, *paths):
        for line in run(self.ksaml, "read", "--json", *paths).stdout.splitlines():
            found = json.loads(line)
            name = (found["subject"] or {}).get("nameIdentifier") or {}
            yield found | {"user": name.get("value"), "assertions": found["assertions"] or 0,
                           "status": (found["statusCodes"] or [None])[-1]}

    def verdict(self, message, kind, identifier):
        """Exit status and words of verify_then_read; of openssl for a signature in a URL."""
        if "&Signature=" in message:
            text, _, signature = message.split("?", 1)[1].partition("&Signature=")
            with open("signature", "wb") as file:
                file.write(base64.b64decode(urllib.parse.unquote(signature)))
            good = run("openssl", "dgst", "-sha256", "-verify", "public.pem", "-signature", "signature",
                       write("signed", text)).returncode == 0
            return (5, "") if good else (1, "the text was changed")
        asks = SETUP["channel" if kind in ("attributes", "authz") else "issuer"]
        said = run(self.verify, "--audience", asks, "--issuer", SETUP["idp"], "--in-response-to", identifier,
                   "cert.pem", write("verified.xml", xml_of(message)))
        return said.returncode, said.stdout.strip()


def wanted_response(kind, outcome, asks, identifier, told):
    wanted = {"accepted": True, "inResponseTo": identifier, "signed": told["signed"], "unreadDates": [],
              "encryptedAssertions": 0, "selectedProvider": SETUP["idp"], "expectedAction": 1}
    if kind == "logout":
        return wanted | {"root": "LogoutResponse", "primaryStatusCode": STATUS + "Success"}
    if outcome not in ("Success", "Permit", "Deny"):
        return wanted | {"assertions": 0, "status": STATUS + outcome,
                         "expectedAction": 2 if outcome == "NoPassive" else 0}
    wanted |= {"assertions": 1, "user": told["user"], "audiences": [asks]}
    if kind == "authz":
        return wanted | {"decisions": [{"resource": RESOURCE, "decision": outcome, "actions": ["Play"]}]}
    return wanted | {"attributes": told["attributes"]} | (
        {"hasValidAuthentication": True, "recipient": SETUP["acs"]} if kind == "authn" else {})


def differences(wanted, found):
    return [f"{key} is {found.get(key)!r}, not {value!r}" for key, value in wanted.items()
            if found.get(key) != value]


def tampered(message, outcome, told):
    """The response with one value changed that matters."""
    xml = xml_of(message)
    if outcome in ("Permit", "Deny"):
        return xml.replace(f'"{outcome}"', '"Permit"' if outcome == "Deny" else '"Deny"')
    if "Assertion" in xml:
        return xml.replace(f">{told['user']}<", ">eve.example<")
    changed = re.sub(r'(status:)\w+("/>)', r"\1PartialLogout\2", xml, count=1)
    if "&Signature=" not in message:
        return changed
    deflated = zlib.compress(changed.encode(), wbits=-15)
    return message.replace(value_in(message), urllib.parse.quote(base64.b64encode(deflated), safe=""))


def job_for(client, kind, message, outcome, signed):
    return {"kind": kind, "message": message, "outcome": outcome, "signed": signed,
            "user": SETUP["user"] if kind == "authn" else client.subject["user"],
            "attributes": SETUP["attributes"]}


def talk(provider, client, case):
    """The cells of one row of the table, and what is wrong."""
    name, kind, options, outcome, signed, verdict = case
    if kind not in provider.transports or (provider.name, outcome) in CANNOT:
        return ["-"] * 5, []
    message, wanted = client.request(kind, options, provider.transports[kind])
    job = job_for(client, kind, message, outcome, signed)
    result = provider.result(job)
    if "refused" in result:
        return ["NO"] * 5, [result["refused"]]
    wrong = [differences({key: wanted[key] for key in result["read"]}, result["read"])]
    if result["response"] is None:
        return ["NO" if wrong[0] else "yes"] + ["-"] * 4, wrong[0]
    told = job | result.get("told", {})
    path = write(re.sub(r"\W+", "-", f"{provider.name}-{name}"), result["response"])
    found = next(client.read(path))
    wrong.append([] if found["accepted"] else ["not accepted"])
    wrong.append(differences(wanted_response(kind, outcome, wanted["issuer"], wanted["id"], told), found))
    status, words = client.verdict(result["response"], kind, wanted["id"])
    wrong.append([] if status == verdict or str(verdict) in words else [f"verify_then_read: {status} {words}"])
    changed = tampered(result["response"], outcome, told)
    status, words = client.verdict(changed, kind, wanted["id"])
    caught = changed != xml_of(result["response"]) and status == 1 and "text was changed" in words
    wrong.append([] if caught else [f"verify_then_read, tampered: {status} {words}"])
    if name == "authn":
        client.subject = {"file": path, "user": found["user"], "session": found["authenticationSessionId"]}
    return ["NO" if each else "yes" for each in wrong], sum(wrong, [])


def as_is(provider, client):
    """What the provider says to the library's own text of each kind, a line each."""
    for kind, transport in provider.transports.items():
        message, wanted = client.request(kind, [], transport, standard=False)
        outcome = "Permit" if kind == "authz" else "Success"
        result = provider.result(job_for(client, kind, message, outcome, ["Response"]))
        unread = differences({key: wanted[key] for key in result.get("read", {})}, result.get("read"))
        said = "refused: " + result["refused"] if "refused" in result else "; ".join(unread) or "understood"
        for what in ("id", "session", "subject"):
            value = wanted[what][0] if what == "session" else wanted[what]
            said = said.replace(value, what.upper())
        yield f"{provider.name}, {kind}: {said}\n"


def hundred_logouts(provider, client):
    """A hundred requests, understood and accepted each."""
    paths = []
    for turn in range(100):
        message, wanted = client.request("logout", [], provider.transports["logout"])
        result = provider.result(job_for(client, "logout", message, "Success", ["LogoutResponse"]))
        if not differences({key: wanted[key] for key in result.get("read", {"id": None})}, result.get("read", {})):
            paths.append(write(f"logout-{turn}", result["response"]))
    return sum(found["accepted"] and found["expectedAction"] == 1 for found in client.read(*paths))


def set_up(folder):
    os.makedirs(folder, exist_ok=True)
    os.chdir(folder)
    run("openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "2", "-subj", "/CN=interop",
        "-keyout", "key.pem", "-out", "cert.pem")
    write("public.pem", run("openssl", "x509", "-in", "cert.pem", "-noout", "-pubkey").stdout)
    write("setup.json", json.dumps(SETUP))
    with open("cert.pem") as file:
        key = ('<KeyDescriptor><KeyInfo xmlns="http://www.w3.org/2000/09/xmldsig#"><X509Data><X509Certificate>' +
               "".join(file.read().split("\n")[1:-2]) + "</X509Certificate></X509Data></KeyInfo></KeyDescriptor>")
    for file, entity, role, more, services, url in (
            ("idp", SETUP["idp"], "IDP", key, ["SingleLogoutService", "SingleSignOnService"], SETUP["url"]),
            ("issuer", SETUP["issuer"], "SP", "", ["SingleLogoutService", "AssertionConsumerService"], SETUP["acs"]),
            ("channel", SETUP["channel"], "SP", "", ["AssertionConsumerService"], SETUP["acs"])):
        write(file + ".xml", f'<EntityDescriptor xmlns="urn:oasis:names:tc:SAML:2.0:metadata" entityID="{entity}">'
              f'<{role}SSODescriptor protocolSupportEnumeration="urn:oasis:names:tc:SAML:2.0:protocol">{more}' +
              "".join(f'<{service} Binding="urn:oasis:names:tc:SAML:2.0:bindings:HTTP-{binding}" Location="{url}"' +
                      (f' index="{index}"/>' if "Consumer" in service else "/>")
                      for service in services for index, binding in enumerate(("POST", "Redirect"))) +
              f"</{role}SSODescriptor></EntityDescriptor>")


def missing(name):
    needed = PROVIDERS[name][1]
    if os.path.splitext(PROVIDERS[name][0])[1] == ".py" and needed in ("saml2", "lasso"):
        return run(sys.executable, "-c", f"import {needed}").returncode != 0
    return not shutil.which(needed)


def main():
    arguments = [each for each in sys.argv[1:] if each != "--update"]
    (ksaml, verify), folder, names = map(os.path.abspath, arguments[:2]), arguments[2], arguments[3:]
    os.environ["PATH"] += ":" + os.path.dirname(ksaml)
    absent = [name for name in names if missing(name)]
    if absent:
        print(f"interop.py: skipped: not installed here: {', '.join(absent)}")
        return 77
    set_up(folder)
    failures, said = 0, []
    print(f"{'provider':14}{'message':25}" + " ".join(f"{each:10}" for each in COLUMNS))
    for name in names:
        provider, client, began = Provider(name), Client(ksaml, verify), time.monotonic()
        for case in CASES:
            cells, problems = talk(provider, client, case)
            print(f"{name:14}{case[0]:25}" + " ".join(f"{each:10}" for each in cells))
            failures += len(problems)
            print("".join(f"    {problem}\n" for problem in problems), end="", flush=True)
        if name == "Lasso":
            good = hundred_logouts(provider, client)
            failures += good != 100
            print(f"{name:14}{good} of 100 logouts understood and accepted")
        said += as_is(provider, client)
        provider.stop()
        print(f"{name:14}{time.monotonic() - began:.1f} s\n", flush=True)
    with open(AS_IS) as file:
        kept = file.readlines()
    if "--update" in sys.argv:
        others = [line for line in kept if line.split(",")[0] not in names]
        write(AS_IS, "".join(sorted(others + said, key=lambda line: list(PROVIDERS).index(line.split(",")[0]))))
    else:
        for line in sorted(set(said) ^ {line for line in kept if line.split(",")[0] in names}):
            failures += 1
            print(f"as_is.txt {'lacks' if line in said else 'keeps'}: {line}", end="")
    print(f"{failures} failures")
    return 1 if failures else 0


SUBJECT = f"""<samlp:Response xmlns:samlp="urn:oasis:names:tc:SAML:2.0:protocol" ID="_r" Version="2.0"
 IssueInstant="2026-01-01T00:00:00Z" xmlns:saml="urn:oasis:names:tc:SAML:2.0:assertion"><samlp:Status>
<samlp:StatusCode Value="{STATUS}Success"/></samlp:Status><saml:Assertion ID="_a" Version="2.0"
 IssueInstant="2026-01-01T00:00:00Z"><saml:Issuer>i</saml:Issuer><saml:Subject><saml:NameID
 Format="{SETUP['name_format']}">{SETUP['user']}</saml:NameID></saml:Subject></saml:Assertion></samlp:Response>"""

if __name__ == "__main__":
    sys.exit(main())
