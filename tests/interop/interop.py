#!/usr/bin/python3
"""Sends ksaml's requests to real identity providers, reads their responses, and prints a table.

usage: interop.py [--update] KSAML VERIFY_THEN_READ FOLDER PROVIDER...

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
import urllib.parse
import zlib

HERE = os.path.dirname(os.path.abspath(__file__))
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

# The adapter, a command that succeeds where the provider is installed, how it takes each kind of
# request, and the outcomes it cannot write. docs/providers.md says why something is left out.
NPM = (["node", "npm_providers.js"], ["node", "--version"])
READER = {"authn": "xml", "attributes": "xml", "authz": "xml", "logout": "xml"}
SERVER = {"authn": "redirect", "attributes": "soap", "authz": "soap", "logout": "redirect"}
BROWSER = {"authn": "redirect", "logout": "redirect"}
PROVIDERS = {
    "OpenSAML": (["opensaml_reader"], ["which", "opensaml_reader"], READER, []),
    "pysaml2": ([sys.executable, "pysaml2_provider.py"], [sys.executable, "-c", "import saml2"], SERVER, []),
    "Lasso": ([sys.executable, "lasso_provider.py"], [sys.executable, "-c", "import lasso"],
              SERVER | {"logout": "soap"}, []),
    "SimpleSAMLphp": ([sys.executable, "simplesamlphp_provider.py"], ["php", "--version"], BROWSER, []),
    "samlp": (*NPM, BROWSER, ["NoPassive"]),
    "samlify": (*NPM, {"authn": "post", "logout": "post"}, ["NoPassive", "AuthnFailed", "RequestDenied"]),
}

# message, kind, options of ksaml, the outcome and the signatures that the provider is told, and the
# exit status or the words of verify_then_read, which takes nothing but a sign-in for one.
CASES = [
    ("authn", "authn", [], "Success", ["Response"], 0),
    ("authn, assertion signed", "authn", [], "Success", ["Assertion"], 0),
    ("authn, both signed", "authn", [], "Success", ["Response", "Assertion"], 0),
    ("authn --passive", "authn", ["--passive"], "Success", ["Response"], 0),
    ("authn --force-authn", "authn", ["--force-authn"], "Success", ["Response"], 0),
    ("denied: NoPassive", "authn", ["--passive"], "NoPassive", ["Response"], 3),
    ("denied: AuthnFailed", "authn", [], "AuthnFailed", ["Response"], 4),
    ("denied: RequestDenied", "authn", [], "RequestDenied", ["Response"], 4),
    ("attributes", "attributes", [], "Success", ["Response"], "no authentication statement"),
    ("authz: Permit", "authz", [], "Permit", ["Response"], "no authentication statement"),
    ("authz: Deny", "authz", [], "Deny", ["Response"], "no authentication statement"),
    ("logout", "logout", [], "Success", ["LogoutResponse"], 5),
]


def run(*command):
    return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)


def write(path, text):
    with open(path, "w") as file:
        file.write(text)
    return path


def differences(wanted, found):
    return [f"{key} is {found.get(key)!r}, not {value!r}" for key, value in wanted.items()
            if found.get(key) != value]


def xml_of(message):
    """The XML text in a URL, in base64, deflated or not, or in a SOAP envelope."""
    if message.startswith("http"):
        message = urllib.parse.unquote(re.search("SAMLRequest=([^&]*)", message)[1])
    if not message.startswith("<"):
        data = base64.b64decode(message)
        message = (data if data.startswith(b"<") else zlib.decompress(data, -15)).decode()
    soap = re.match(r"(.*<(?:[\w-]+:)?Body[^>]*>)\s*(<[^\s>]+)([^>]*)(>.*)</(?:[\w-]+:)?Body>", message, re.S)
    if not soap:
        return message
    around, tag, attributes, rest = soap.groups()  # the message's prefixes may be declared around it
    declared = re.findall(r'(xmlns[\w:-]*)(="[^"]*")', around)
    return tag + attributes + "".join(f" {a}{b}" for a, b in declared if a + "=" not in attributes) + rest


class Client:
    """What asks a provider: its process, and the subject of the last sign-in there."""

    def __init__(self, ksaml, verify, name):
        self.ksaml, self.verify, self.name, self.process = ksaml, verify, name, None
        self.subject, self.user, self.session = os.path.join(HERE, "../golden/success.xml"), "erin@example", "s-_a1"

    def result(self, job):
        """The provider's result of a job. A process that ended is started again for the next."""
        if not self.process:
            command = [os.path.join(HERE, each) if "." in each[-4:] else each for each in PROVIDERS[self.name][0]]
            with open(f"{self.name}.log", "w") as log:
                self.process = subprocess.Popen([*command, self.name], stdin=subprocess.PIPE,
                                                stdout=subprocess.PIPE, stderr=log, text=True)
        self.process.stdin.write(json.dumps(job) + "\n")
        self.process.stdin.flush()
        line = self.process.stdout.readline()
        return json.loads(line) if line else {"refused": "its process ended with " + self.stop()}

    def stop(self):
        self.process.stdin.close()
        status, self.process = self.process.wait(), None
        return signal.Signals(-status).name if status < 0 else f"status {status}: see {self.name}.log"

    def ask(self, kind, options, outcome, signed, standard=True):
        """The job, what the provider should read in it, its result, and what is wrong with what it read."""
        transport, query = PROVIDERS[self.name][2][kind], kind in ("attributes", "authz")
        asks = SETUP["channel" if query else "issuer"]
        arguments = ["--channel", asks, "--subject-from", self.subject] if query else ["--issuer", asks]
        arguments += {"authn": [], "attributes": ["--attribute", "HouseholdID", "--attribute", "Language"],
                      "authz": ["--resource", RESOURCE], "logout": ["--session-index", self.session]}[kind]
        if standard:
            arguments += ["--standard", "--destination", SETUP["url"]]
            arguments += {"authn": ["--acs-url", SETUP["acs"], "--provider-name", "Harbour"],
                          "logout": ["--name-id-from", self.subject]}.get(kind, [])
        elif kind == "authn":
            arguments += ["--provider-name", "Harbour"]
        arguments += {"xml": [], "soap": ["--soap"], "post": ["--base64"],
                      "redirect": ["--redirect", SETUP["url"]]}[transport]
        identifier = ""
        # Words on the bare UUID of a logout request depend on its first character.
        while not identifier or kind == "logout" and not standard and identifier[0].isalpha():
            message = run(self.ksaml, "request", kind, *arguments, *options).stdout.strip()
            identifier = re.search(r'\bID="([^"]+)"', xml_of(message))[1]
        job = {"kind": kind, "message": message, "outcome": outcome, "signed": signed,
               "user": SETUP["user"] if kind == "authn" else self.user, "attributes": SETUP["attributes"]}
        result = self.result(job)
        wanted = {"id": identifier, "issuer": asks, "passive": "--passive" in options,
                  "force": "--force-authn" in options, "acs": SETUP["acs"] if standard else None,
                  "policy": SETUP["name_format"], "subject": self.user, "session": [self.session],
                  "attributes": ["HouseholdID", "Language"], "resource": RESOURCE, "actions": ["Play"]}
        unread = differences({key: wanted[key] for key in result.get("read", ())}, result.get("read"))
        return job, wanted, result, [result["refused"]] if "refused" in result else unread

    def verdict(self, message, wanted):
        """Exit status and words of verify_then_read."""
        said = run(self.verify, "--audience", wanted["issuer"], "--issuer", SETUP["idp"],
                   "--in-response-to", wanted["id"], "cert.pem", write("verified.xml", message))
        return said.returncode, said.stdout.strip()

    def row(self, name, kind, options, outcome, signed, verdict):
        """The cells of one row of the table, and what is wrong."""
        told, asked, result, unread = self.ask(kind, options, outcome, signed)
        if "refused" in result or result["response"] is None:
            return ["NO" if unread else "yes"] + ["-"] * 4, unread
        told |= result.get("told", {})
        path = write(re.sub(r"\W+", "-", f"{self.name}-{name}"), result["response"])
        found = json.loads(run(self.ksaml, "read", "--json", path).stdout)
        message = xml_of(result["response"])
        status, words = self.verdict(message, asked)
        changed = tampered(message, told)
        refusal, reason = self.verdict(changed, asked)
        caught = changed != message and refusal == 1 and "text was changed" in reason
        good = verdict == status if isinstance(verdict, int) else verdict in words
        wrong = [unread, [] if found["accepted"] else ["not accepted"],
                 differences(wanted_response(asked, told), shown(found)),
                 [] if good else [f"verify_then_read: {status} {words}"],
                 [] if caught else [f"verify_then_read, tampered: {refusal} {reason}"]]
        if name == "authn":
            self.subject, self.user, self.session = path, shown(found)["user"], found["authenticationSessionId"]
        return ["NO" if each else "yes" for each in wrong], sum(wrong, [])

    def as_is(self, kind):
        """What the provider says to the library's own text of a request."""
        _, asked, result, wrong = self.ask(kind, [], "Permit" if kind == "authz" else "Success", ["Response"], False)
        said = ("refused: " if "refused" in result else "") + ("; ".join(wrong) or "understood")
        for word, value in (("ID", asked["id"]), ("SESSION", self.session), ("SUBJECT", self.user)):
            said = said.replace(value, word)
        return f"{self.name}, {kind}: {said}\n"


def shown(found):
    """What ksaml shows of a response, without what depends on when a message was made."""
    return found | {
        "user": ((found["subject"] or {}).get("nameIdentifier") or {}).get("value"),
        "assertions": found["assertions"] or 0, "status": found["statusCodes"][-1:],
        "unreadDates": [each for each in found["unreadDates"] if each["attribute"] != "IssueInstant"]}


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


def tampered(xml, told):
    """The response with one value changed that matters."""
    if told["kind"] == "authz":
        return re.sub('"(Permit|Deny)"', lambda found: '"Deny"' if found[1] == "Permit" else '"Permit"', xml)
    if "Assertion" in xml:
        return xml.replace(f">{told['user']}<", ">eve.example<")
    return re.sub(r'(status:)\w+("/>)', r"\1PartialLogout\2", xml, count=1)


def set_up(folder):
    os.makedirs(folder, exist_ok=True)
    os.chdir(folder)
    run("openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "2", "-subj", "/CN=interop",
        "-keyout", "key.pem", "-out", "cert.pem")
    write("setup.json", json.dumps(SETUP))
    with open("cert.pem") as file:
        key = ('<KeyDescriptor><KeyInfo xmlns="http://www.w3.org/2000/09/xmldsig#"><X509Data><X509Certificate>' +
               "".join(file.read().split("\n")[1:-2]) + "</X509Certificate></X509Data></KeyInfo></KeyDescriptor>")
    service = '<{} Binding="urn:oasis:names:tc:SAML:2.0:bindings:HTTP-{}" Location="{}"{}/>'
    requester = "".join(service.format(each, "POST", SETUP["acs"], index) for each, index in (
        ("SingleLogoutService", ""), ("AssertionConsumerService", ' index="0"')))
    provider = key + "".join(service.format(each, "Redirect", SETUP["url"], "") for each in (
        "SingleLogoutService", "SingleSignOnService"))
    for name, role, content in (("idp", "IDP", provider), ("issuer", "SP", requester), ("channel", "SP", requester)):
        write(name + ".xml", f'<EntityDescriptor xmlns="urn:oasis:names:tc:SAML:2.0:metadata" entityID="{SETUP[name]}">'
              f'<{role}SSODescriptor protocolSupportEnumeration="urn:oasis:names:tc:SAML:2.0:protocol">{content}'
              f"</{role}SSODescriptor></EntityDescriptor>")


def compare(said, names, update):
    """Differences between what was said and what as_is.txt keeps of these providers."""
    path = os.path.join(HERE, "as_is.txt")
    with open(path) as file:
        lines = file.readlines()
    kept = [line for line in lines if line.split(",")[0] in names]
    if update:
        kept = said
        write(path, "".join([line for line in lines if line.split(",")[0] not in names] + said))
    return [("new: " if line in said else "gone: ") + line for line in said + kept if (line in said) != (line in kept)]


def main():
    arguments = [each for each in sys.argv[1:] if each != "--update"]
    (ksaml, verify), folder, names = map(os.path.abspath, arguments[:2]), arguments[2], arguments[3:]
    os.environ["PATH"] += ":" + os.path.dirname(ksaml)
    os.environ["PYTHONDONTWRITEBYTECODE"] = "1"  # the source tree stays as it is
    absent = [name for name in names if run("env", *PROVIDERS[name][1]).returncode]
    if absent:
        print("interop.py: skipped, for these are not installed here:", *absent)
        return 77
    set_up(folder)
    failures, said = 0, []
    print(f"{'provider':14}{'message':25}understood accepted   right      verified   tampered refused")
    for name in names:
        client, (_, _, transports, cannot) = Client(ksaml, verify, name), PROVIDERS[name]
        for case in CASES:
            has = case[1] in transports and case[3] not in cannot
            cells, problems = client.row(*case) if has else (["-"] * 5, [])
            print(f"{name:14}{case[0]:25}" + " ".join(f"{each:10}" for each in cells).rstrip())
            print("".join(f"    {problem}\n" for problem in problems), end="", flush=True)
            failures += len(problems)
        said += map(client.as_is, transports)
        if client.process:
            client.stop()
    changed = compare(said, names, "--update" in sys.argv)
    print("".join(f"as_is.txt, {line}" for line in changed) + f"{failures + len(changed)} failures")
    return 1 if failures or changed else 0


if __name__ == "__main__":
    sys.exit(main())
