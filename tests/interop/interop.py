#!/usr/bin/python3
"""Talks to real identity providers and prints what became of each message.

usage: interop.py KSAML VERIFY_THEN_READ FOLDER [--update] PROVIDER...

Every provider is a program (see PROVIDERS) that takes jobs as lines of JSON and writes what it read
in a request, and its response, or why it refused. FOLDER gets keys, metadata and messages. as_is.txt
lists what providers say to requests without --standard; --update writes it anew.
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
PLAY = "https://harbour-tv.example/live"
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

# Which program, and how it takes each kind of request. What is left out it cannot do; the table in
# docs/providers.md says why.
PROVIDERS = {
    "schema": (["/usr/bin/python3", "schema_reader.py"],
               dict(authn="xml", attributes="xml", authz="xml", logout="xml")),
    "OpenSAML": (["opensaml_reader"], dict(authn="xml", attributes="xml", authz="xml", logout="xml")),
    "pysaml2": (["/usr/bin/python3", "pysaml2_provider.py"],
                dict(authn="redirect", attributes="soap", authz="soap", logout="redirect")),
    "Lasso": (["/usr/bin/python3", "lasso_provider.py"],
              dict(authn="redirect", attributes="soap", authz="soap", logout="redirect")),
    "SimpleSAMLphp": (["/usr/bin/python3", "simplesamlphp_provider.py"],
                      dict(authn="redirect", attributes="soap", logout="redirect")),
    "samlp": (["node", "npm_providers.js", "samlp"], dict(authn="redirect")),
    "samlify": (["node", "npm_providers.js", "samlify"], dict(authn="post", logout="post")),
    "node-saml": (["node", "npm_providers.js", "node-saml"], dict(logout="redirect")),
}
CANNOT = {("samlify", "NoPassive"), ("samlify", "AuthnFailed"), ("samlify", "RequestDenied")}

# message, kind, options of ksaml, outcome that the provider is told, what it is told to sign
CASES = [
    ("authn", "authn", [], "Success", ["Response"]),
    ("authn, assertion signed", "authn", [], "Success", ["Assertion"]),
    ("authn, both signed", "authn", [], "Success", ["Response", "Assertion"]),
    ("authn --passive", "authn", ["--passive"], "Success", ["Response"]),
    ("authn --force-authn", "authn", ["--force-authn"], "Success", ["Response"]),
    ("denied: NoPassive", "authn", ["--passive"], "NoPassive", ["Response"]),
    ("denied: AuthnFailed", "authn", [], "AuthnFailed", ["Response"]),
    ("denied: RequestDenied", "authn", [], "RequestDenied", ["Response"]),
    ("attributes", "attributes", [], "Success", ["Response"]),
    ("authz: Permit", "authz", [], "Permit", ["Response"]),
    ("authz: Deny", "authz", [], "Deny", ["Response"]),
    ("logout", "logout", [], "Success", ["LogoutResponse"]),
]


class Provider:
    def __init__(self, name):
        self.name = name
        self.command, self.transports = PROVIDERS[name]
        self.process = None

    def start(self):
        program, *arguments = self.command
        found = [os.path.join(HERE, each) if os.path.exists(os.path.join(HERE, each)) else each
                 for each in arguments]
        self.process = subprocess.Popen([program, *found], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                        stderr=open(f"{self.name}.log", "a"), text=True)

    def result(self, job):
        if not self.process:
            self.start()
        self.process.stdin.write(json.dumps(job) + "\n")
        self.process.stdin.flush()
        line = self.process.stdout.readline()
        if line:
            return json.loads(line)
        status, self.process = self.process.wait(), None
        return {"refused": f"its process ends with {signal.Signals(-status).name}" if status < 0
                else f"its process ends with status {status}, see {self.name}.log"}

    def stop(self):
        if self.process:
            self.process.stdin.close()
            self.process.wait()


def run(*command):
    return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)


def write(path, text):
    with open(path, "w") as file:
        file.write(text)
    return path


def xml_of(message):
    """The XML text in a URL or form, in base64, deflated or not, or in a SOAP envelope."""
    text = message.strip()
    value = re.search(r"SAML(?:Request|Response)=([^&]*)", text)
    if value and not text.startswith("<"):
        text = urllib.parse.unquote(value[1])
    if not text.startswith("<"):
        data = base64.b64decode(text)
        text = (data if data.lstrip().startswith(b"<") else zlib.decompress(data, -15)).decode()
    soap = re.match(r"(.*<(?:[\w-]+:)?Body[^>]*>)\s*(<[^\s>]+)([^>]*)(>.*)</(?:[\w-]+:)?Body>", text, re.S)
    if not soap:
        return text
    # The message's prefixes may be declared on the envelope.
    around, tag, attributes, rest = soap.groups()
    declared = dict(re.findall(r'(xmlns[\w:-]*)=("[^"]*")', around))
    return tag + attributes + "".join(
        f" {name}={value}" for name, value in declared.items() if f"{name}=" not in attributes) + rest


def request(ksaml, kind, options, transport, subject, standard=True):
    who = {"authn": ["--issuer", SETUP["issuer"], "--acs-url", SETUP["acs"], "--provider-name", "Harbour"],
           "attributes": ["--channel", SETUP["channel"], "--attribute", "HouseholdID",
                          "--attribute", "Language"],
           "authz": ["--channel", SETUP["channel"], "--resource", PLAY],
           "logout": ["--issuer", SETUP["issuer"], "--session-index", subject["session"]]}[kind]
    if standard:
        who += ["--standard", "--destination", SETUP["url"]]
        who += ["--name-id-from", subject["file"]] if kind == "logout" else []
    if kind in ("attributes", "authz"):
        who += ["--subject-from", subject["file"]]
    transports = {"xml": [], "soap": ["--soap"], "post": ["--base64"], "redirect": ["--redirect", SETUP["url"]]}
    while True:
        made = run(ksaml, "request", kind, *who, *options, *transports[transport])
        if made.returncode != 0:
            sys.exit(f"interop.py: ksaml request {kind} {who} failed")
        identifier = re.search(r'\bID="([^"]+)"', xml_of(made.stdout))[1]
        # As it is, the ID of a logout request is a bare UUID: what is said of it depends on its
        # first character, so take one that is the rule.
        if kind != "logout" or standard or identifier[0].isdigit():
            return made.stdout.strip(), identifier


def wanted_of_request(kind, options, identifier, subject):
    common = {"id": identifier, "issuer": SETUP["channel" if kind in ("attributes", "authz") else "issuer"]}
    return common | {
        "authn": {"passive": "--passive" in options, "force": "--force-authn" in options,
                  "acs": SETUP["acs"], "policy": SETUP["name_format"]},
        "attributes": {"subject": subject["user"], "attributes": ["HouseholdID", "Language"]},
        "authz": {"subject": subject["user"], "resource": PLAY, "actions": ["Play"]},
        "logout": {"subject": subject["user"], "session": [subject["session"]]}}[kind]


def wanted_of_response(kind, outcome, signed, identifier, told):
    wanted = {"accepted": True, "inResponseTo": identifier, "signed": signed, "encryptedAssertions": 0,
              "unreadDates": [], "selectedProvider": SETUP["idp"]}
    if kind == "logout":
        return wanted | {"root": "LogoutResponse", "primaryStatusCode": STATUS + "Success"}
    if outcome not in ("Success", "Permit", "Deny"):
        return wanted | {"assertions": 0, "denied": STATUS + outcome,
                         "expectedAction": PRESENT_UI if outcome == "NoPassive" else NO_ACTION}
    wanted |= {"assertions": 1, "primaryStatusCode": STATUS + "Success", "user": told["user"],
               "audiences": [SETUP["issuer" if kind == "authn" else "channel"]]}
    if kind == "authz":
        return wanted | {"decisions": [{"resource": PLAY, "decision": outcome, "actions": ["Play"]}]}
    wanted |= {"attributes": told["attributes"]}
    return wanted | ({"hasValidAuthentication": True, "recipient": SETUP["acs"]} if kind == "authn" else {})


NO_ACTION, PRESENT_UI = 0, 2


def differences(wanted, found):
    return [f"{key} is {found.get(key)!r}, not {value!r}" for key, value in wanted.items()
            if found.get(key) != value]


def reading(ksaml, path):
    text = run(ksaml, "read", "--json", path).stdout
    if not text:
        return dict.fromkeys(("accepted", "statusCodes"))  # nothing that can be read
    found = json.loads(text)
    identifier = (found["subject"] or {}).get("nameIdentifier") or {}
    codes = found["statusCodes"] or [None]
    return found | {"user": identifier.get("value"), "denied": codes[-1],
                    "assertions": found["assertions"] or 0}


def signature(verify, path, audience):
    """Whether the example client finds the signature good, and its own words."""
    words = run(verify, "cert.pem", path, audience).stdout.strip()
    return words.startswith("accepted: ") or "status is" in words, words


def tampered(xml, outcome, told):
    """The response with one value changed that matters."""
    if outcome in ("Permit", "Deny"):
        return xml.replace(f'"{outcome}"', '"Permit"' if outcome == "Deny" else '"Deny"')
    if "Assertion" not in xml:
        return re.sub(r"(status:)(\w+)(\"[^>]*>)", r"\1PartialLogout\3", xml, count=1)
    return xml.replace(f">{told['user']}<", ">eve.example<")


def talk(provider, case, ksaml, verify, subject):
    """The five cells of the table, the reasons for those that fail, and the response's file."""
    name, kind, options, outcome, signed = case
    transport = provider.transports.get(kind)
    if not transport or (provider.name, outcome) in CANNOT:
        return ["-"] * 5, [], None
    message, identifier = request(ksaml, kind, options, transport, subject)
    told = {"user": SETUP["user"] if kind == "authn" else subject["user"], "attributes": SETUP["attributes"]}
    result = provider.result({"kind": kind, "message": message, "outcome": outcome, "signed": signed, **told})
    if "refused" in result:
        return ["NO", "NO", "NO", "NO", "NO"], [result["refused"]], None
    told |= result.get("told", {})
    wanted = wanted_of_request(kind, options, identifier, subject)
    problems = differences({key: wanted[key] for key in result["read"] | {"id": 0, "issuer": 0}}, result["read"])
    cells = ["NO" if problems else "yes"]
    if result["response"] is None:
        return cells + ["-"] * 4, problems, None
    path = write(f"{provider.name}-{name}".replace(": ", "-").replace(" ", "-"), result["response"])
    found = reading(ksaml, path)
    cells.append("yes" if found["accepted"] else "NO")
    wrong = differences(wanted_of_response(kind, outcome, result.get("signed", signed), identifier, told), found)
    cells.append("NO" if wrong else "yes")
    audience = SETUP["issuer" if kind in ("authn", "logout") else "channel"]
    xml = xml_of(result["response"])
    good, words = signature(verify, write("verified.xml", xml), audience)
    cells.append("yes" if good else "NO")
    changed = tampered(xml, outcome, told)
    accepted, why = signature(verify, write("tampered.xml", changed), audience)
    cells.append("yes" if changed != xml and not accepted and "text was changed" in why else "NO")
    problems += wrong + [f"verify_then_read: {each}" for each, bad in ((words, not good), (why, cells[-1] == "NO")) if bad]
    return cells, problems, path


def as_is(provider, ksaml, subject):
    """What the provider says to the library's own text of each kind."""
    for kind, transport in provider.transports.items():
        message, identifier = request(ksaml, kind, [], transport, subject, standard=False)
        result = provider.result({"kind": kind, "message": message, "outcome": "Permit" if kind == "authz" else "Success",
                                  "signed": ["Response"], "user": subject["user"],
                                  "attributes": SETUP["attributes"]})
        wanted = wanted_of_request(kind, [], identifier, subject)
        if "refused" in result:
            text = "refused: " + result["refused"]
        else:
            text = "; ".join(differences({key: wanted[key] for key in result["read"]}, result["read"])) or "understood"
        yield f"{provider.name}, {kind}: {text.replace(identifier, 'ID')}"


def set_up(folder):
    os.makedirs(folder, exist_ok=True)
    os.chdir(folder)
    run("openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "2", "-subj", "/CN=interop",
        "-keyout", "key.pem", "-out", "cert.pem")
    certificate = "".join(open("cert.pem").read().split("\n")[1:-2])
    write("setup.json", json.dumps(SETUP | {"certificate": certificate}))
    bindings = "urn:oasis:names:tc:SAML:2.0:bindings:"

    def metadata(entity, role, services):
        key = f"<KeyDescriptor><ds:KeyInfo><ds:X509Data><ds:X509Certificate>{certificate}</ds:X509Certificate>" \
              "</ds:X509Data></ds:KeyInfo></KeyDescriptor>" if role == "IDPSSODescriptor" else ""
        return f'<EntityDescriptor xmlns="urn:oasis:names:tc:SAML:2.0:metadata" ' \
               f'xmlns:ds="http://www.w3.org/2000/09/xmldsig#" entityID="{entity}">' \
               f'<{role} protocolSupportEnumeration="urn:oasis:names:tc:SAML:2.0:protocol">{key}{services}' \
               f"</{role}></EntityDescriptor>"

    def service(name, binding, url, more=""):
        return f'<{name} Binding="{bindings}{binding}" Location="{url}"{more}/>'

    write("idp.xml", metadata(SETUP["idp"], "IDPSSODescriptor", "".join(
        service(name, binding, SETUP["url"]) for name in ("SingleLogoutService", "SingleSignOnService")
        for binding in ("HTTP-Redirect", "HTTP-POST"))))
    for entity in ("issuer", "channel"):
        write(f"{entity}.xml", metadata(
            SETUP[entity], "SPSSODescriptor",
            service("SingleLogoutService", "HTTP-POST", SETUP["acs"]) +
            service("AssertionConsumerService", "HTTP-POST", SETUP["acs"], ' index="0" isDefault="true"')))


def main():
    arguments = [each for each in sys.argv[1:] if each != "--update"]
    ksaml, verify = (os.path.abspath(each) for each in arguments[:2])
    folder, names = arguments[2], arguments[3:]
    set_up(folder)
    titles = ["understood", "accepted", "right", "verified", "tampered refused"]
    print(f"{'provider':14}{'message':25}" + " ".join(f"{each:10}" for each in titles))
    failures, said = 0, []
    for name in names:
        provider, began = Provider(name), time.monotonic()
        subject = {"file": write("subject.xml", SUBJECT), "user": SETUP["user"], "session": "_session-1"}
        for case in CASES:
            cells, problems, path = talk(provider, case, ksaml, verify, subject)
            print(f"{name:14}{case[0]:25}" + " ".join(f"{each:10}" for each in cells))
            if case[0] == "authn" and path:
                found = reading(ksaml, path)
                subject = {"file": path, "user": found["user"], "session": found["authenticationSessionId"]}
            for problem in problems:
                failures += 1
                print(f"    {problem}")
        said += as_is(provider, ksaml, subject)
        provider.stop()
        print(f"{name}: {time.monotonic() - began:.1f} s", file=sys.stderr)
    print("\n".join(said))
    return 1 if failures else 0


SUBJECT = f"""<samlp:Response xmlns:samlp="urn:oasis:names:tc:SAML:2.0:protocol" ID="_r" Version="2.0"
 IssueInstant="2026-01-01T00:00:00Z" xmlns:saml="urn:oasis:names:tc:SAML:2.0:assertion"><samlp:Status>
<samlp:StatusCode Value="{STATUS}Success"/></samlp:Status><saml:Assertion ID="_a" Version="2.0"
 IssueInstant="2026-01-01T00:00:00Z"><saml:Issuer>i</saml:Issuer><saml:Subject><saml:NameID
 Format="{SETUP['name_format']}">{SETUP['user']}</saml:NameID></saml:Subject></saml:Assertion></samlp:Response>"""

if __name__ == "__main__":
    sys.exit(main())
