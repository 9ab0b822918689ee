# SimpleSAMLphp as an identity provider, under PHP's own server. It does not show what it read.
import html
import os
import re
import socket
import subprocess
import time
import urllib.error
import urllib.request

from provider import serve

PLACES = {"authn": "saml2/idp/SSOService.php", "logout": "saml2/idp/SingleLogoutService.php"}
with socket.socket() as free:
    free.bind(("127.0.0.1", 0))
    port = free.getsockname()[1]
url = f"http://127.0.0.1:{port}/"


def browser():
    return urllib.request.build_opener(urllib.request.HTTPCookieProcessor())


signed_in = browser()


def send(job):
    # A browser of its own is not signed in, which is what makes the provider say NoPassive.
    who = browser() if job["outcome"] == "NoPassive" else signed_in
    request = urllib.request.Request(
        url + PLACES[job["kind"]] + "?" + job["message"].split("?", 1)[1],
        headers={"X-Outcome": job["outcome"], "X-Signed": ",".join(job["signed"])})
    try:
        page = who.open(request).read().decode()
    except urllib.error.HTTPError as error:
        page = error.read().decode()
    response = re.search(r'name="SAMLResponse" value="([^"]+)"', page)
    if not response:
        raise RuntimeError(html.unescape(re.search(r"Caused by: ([^\n<]*)", page)[1]))
    return {}, html.unescape(response[1])


server = subprocess.Popen(
    ["php", "-S", f"127.0.0.1:{port}", "-t", "/usr/share/simplesamlphp/www"],
    env=os.environ | {"SIMPLESAMLPHP_CONFIG_DIR": os.path.join(os.path.dirname(__file__), "simplesamlphp"),
                      "INTEROP_FOLDER": os.getcwd(), "INTEROP_URL": url})
try:
    for _ in range(100):
        with socket.socket() as attempt:
            if attempt.connect_ex(("127.0.0.1", port)) == 0:
                break
        time.sleep(0.05)
    serve({"authn": send, "logout": send})
finally:
    server.terminate()
    server.wait()
