# pysaml2 as an identity provider, an attribute authority and a decision point.
from urllib.parse import parse_qs, urlsplit

from saml2 import BINDING_HTTP_POST, BINDING_HTTP_REDIRECT, BINDING_SOAP, saml, samlp, server
from saml2.authn_context import PASSWORDPROTECTEDTRANSPORT
from saml2.config import IdPConfig
from saml2.pack import make_soap_enveloped_saml_thingy
from saml2.s_utils import error_status_factory
from saml2.sigver import pre_signature_part
from saml2.soap import parse_soap_enveloped_saml_thingy
from saml2.xmldsig import DIGEST_SHA256, SIG_RSA_SHA256

from provider import STATUS, at, date, serve, setup

SIGNING = {"sign_alg": SIG_RSA_SHA256, "digest_alg": DIGEST_SHA256}

# Attributes by the names they have here.
POLICY = {"default": {"name_form": "urn:oasis:names:tc:SAML:2.0:attrname-format:unspecified"}}

idp = server.Server(config=IdPConfig().load({
    "entityid": setup["idp"],
    "key_file": "key.pem",
    "cert_file": "cert.pem",
    "xmlsec_binary": "/usr/bin/xmlsec1",
    "metadata": {"local": ["issuer.xml", "channel.xml"]},
    "service": {
        "idp": {
            "endpoints": {
                "single_sign_on_service": [(setup["url"], BINDING_HTTP_REDIRECT)],
                "single_logout_service": [(setup["url"], BINDING_HTTP_REDIRECT)],
            },
            "policy": POLICY,
        },
        "aa": {"endpoints": {"attribute_service": [(setup["url"], BINDING_SOAP)]}, "policy": POLICY},
        "pdp": {"endpoints": {"authz_service": [(setup["url"], BINDING_SOAP)]}},
    },
}))


def query(job):
    return parse_qs(urlsplit(job["message"]).query)["SAMLRequest"][0]


def name_id(job):
    return saml.NameID(format=saml.NAMEID_FORMAT_TRANSIENT, text=job["user"])


def signed(job):
    return {"sign_response": "Response" in job["signed"], "sign_assertion": "Assertion" in job["signed"],
            **SIGNING}


def authn(job):
    request = idp.parse_authn_request(query(job), BINDING_HTTP_REDIRECT).message
    read = {"id": request.id, "issuer": request.issuer.text, "passive": request.is_passive == "true",
            "force": request.force_authn == "true", "acs": request.assertion_consumer_service_url,
            "policy": at(request, "name_id_policy.format")}
    if job["outcome"] != "Success":
        status = error_status_factory((STATUS + job["outcome"], "told so"))
        return read, str(idp._response(request.id, setup["acs"], status, sign=True, **SIGNING))
    return read, str(idp.create_authn_response(
        job["attributes"], request.id, setup["acs"], request.issuer.text, name_id=name_id(job),
        authn={"class_ref": PASSWORDPROTECTEDTRANSPORT}, session_not_on_or_after=date(3600),
        **signed(job)))


def attributes(job):
    request = idp.parse_attribute_query(job["message"], BINDING_SOAP).message
    read = {"id": request.id, "issuer": request.issuer.text, "subject": at(request, "subject.name_id.text"),
            "attributes": [each.name for each in request.attribute]}
    return read, soap(idp.create_attribute_response(
        job["attributes"], request.id, setup["acs"], request.issuer.text,
        name_id=request.subject.name_id, **signed(job)))


def authz(job):
    # It finds no decision query in an envelope by itself.
    query_text = parse_soap_enveloped_saml_thingy(
        job["message"], [f"{{{samlp.NAMESPACE}}}AuthzDecisionQuery"])
    request = idp.parse_authz_decision_query(query_text.decode(), None).message
    read = {"id": request.id, "issuer": request.issuer.text, "subject": at(request, "subject.name_id.text"),
            "resource": request.resource, "actions": [each.text for each in request.action]}
    statement = saml.AuthzDecisionStatement(
        resource=request.resource, decision=job["outcome"],
        action=[saml.Action(namespace=each.namespace, text=each.text) for each in request.action])
    assertion = idp.setup_assertion(
        None, request.issuer.text, request.id, setup["acs"], request.subject.name_id, None,
        idp._issuer(), None, {}, True, True)
    assertion.authz_decision_statement = [statement]
    return read, soap(idp._response(request.id, setup["acs"], sign=True, assertion=assertion, **SIGNING))


def logout(job):
    request = idp.parse_logout_request(query(job), BINDING_HTTP_REDIRECT).message
    read = {"id": request.id, "issuer": request.issuer.text, "subject": at(request, "name_id.text"),
            "session": [each.text for each in request.session_index]}
    return read, str(idp.create_logout_response(request, [BINDING_HTTP_POST], sign=True, **SIGNING))


def soap(response):
    return make_soap_enveloped_saml_thingy(str(response))


serve({"authn": authn, "attributes": attributes, "authz": authz, "logout": logout})
