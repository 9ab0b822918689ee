# pysaml2 as an identity provider, an attribute authority and a decision point.
from urllib.parse import parse_qs, urlsplit

from saml2 import BINDING_HTTP_POST, BINDING_HTTP_REDIRECT, BINDING_SOAP, saml, samlp, server
from saml2.authn_context import PASSWORDPROTECTEDTRANSPORT
from saml2.config import IdPConfig
from saml2.pack import make_soap_enveloped_saml_thingy
from saml2.s_utils import error_status_factory
from saml2.soap import parse_soap_enveloped_saml_thingy
from saml2.xmldsig import DIGEST_SHA256, SIG_RSA_SHA256

from provider import STATUS, at, date, serve, setup

SIGNING = {"sign_alg": SIG_RSA_SHA256, "digest_alg": DIGEST_SHA256}
# Attributes keep the names they have here.
POLICY = {"default": {"name_form": "urn:oasis:names:tc:SAML:2.0:attrname-format:unspecified"}}
idp = server.Server(config=IdPConfig().load({
    "entityid": setup["idp"], "key_file": "key.pem", "cert_file": "cert.pem",
    "xmlsec_binary": "/usr/bin/xmlsec1", "metadata": {"local": ["issuer.xml", "channel.xml"]},
    "service": {
        "idp": {"policy": POLICY, "endpoints": {
            "single_sign_on_service": [(setup["url"], BINDING_HTTP_REDIRECT)],
            "single_logout_service": [(setup["url"], BINDING_HTTP_REDIRECT)]}},
        "aa": {"policy": POLICY, "endpoints": {"attribute_service": [(setup["url"], BINDING_SOAP)]}},
        "pdp": {"endpoints": {"authz_service": [(setup["url"], BINDING_SOAP)]}}}}))


def query(job):
    return parse_qs(urlsplit(job["message"]).query)["SAMLRequest"][0], BINDING_HTTP_REDIRECT


def signed(job):
    return {"sign_response": "Response" in job["signed"], "sign_assertion": "Assertion" in job["signed"], **SIGNING}


def authn(job):
    request = idp.parse_authn_request(*query(job)).message
    read = {"id": request.id, "issuer": request.issuer.text, "passive": request.is_passive == "true",
            "force": request.force_authn == "true", "acs": request.assertion_consumer_service_url,
            "policy": at(request, "name_id_policy.format")}
    if job["outcome"] != "Success":
        status = error_status_factory((STATUS + job["outcome"], "told so"))
        return read, str(idp._response(request.id, setup["acs"], status, sign=True, **SIGNING))
    return read, str(idp.create_authn_response(
        job["attributes"], request.id, setup["acs"], request.issuer.text,
        name_id=saml.NameID(format=setup["name_format"], text=job["user"]),
        authn={"class_ref": PASSWORDPROTECTEDTRANSPORT}, session_not_on_or_after=date(3600), **signed(job)))


def attributes(job):
    request = idp.parse_attribute_query(job["message"], BINDING_SOAP).message
    response = idp.create_attribute_response(
        job["attributes"], request.id, setup["acs"], request.issuer.text, name_id=request.subject.name_id, **signed(job))
    return {"id": request.id, "issuer": request.issuer.text, "subject": at(request, "subject.name_id.text"),
            "attributes": [each.name for each in request.attribute]}, make_soap_enveloped_saml_thingy(str(response))


def authz(job):
    # It opens no envelope around a decision query by itself, and has no maker of decisions.
    text = parse_soap_enveloped_saml_thingy(job["message"], [f"{{{samlp.NAMESPACE}}}AuthzDecisionQuery"])
    request = idp.parse_authz_decision_query(text.decode(), None).message
    assertion = idp.setup_assertion(None, request.issuer.text, request.id, setup["acs"], request.subject.name_id,
                                    None, idp._issuer(), None, {}, True, True)
    assertion.authz_decision_statement = [saml.AuthzDecisionStatement(
        resource=request.resource, decision=job["outcome"], action=request.action)]
    response = idp._response(request.id, setup["acs"], sign=True, assertion=assertion, **SIGNING)
    return {"id": request.id, "issuer": request.issuer.text, "subject": at(request, "subject.name_id.text"),
            "resource": request.resource, "actions": [each.text for each in request.action]
            }, make_soap_enveloped_saml_thingy(str(response))


def logout(job):
    request = idp.parse_logout_request(*query(job)).message
    read = {"id": request.id, "issuer": request.issuer.text, "subject": at(request, "name_id.text"),
            "session": [each.text for each in request.session_index]}
    return read, str(idp.create_logout_response(request, [BINDING_HTTP_POST], sign=True, **SIGNING))


serve({"authn": authn, "attributes": attributes, "authz": authz, "logout": logout})
