# Lasso as an identity provider, an attribute authority and a decision point.
import lasso

from provider import STATUS, at, date, serve, setup

idp = lasso.Server("idp.xml", "key.pem", None, "cert.pem")
idp.signatureMethod = lasso.SIGNATURE_METHOD_RSA_SHA256
for requester in ("issuer.xml", "channel.xml"):
    idp.addProvider(lasso.PROVIDER_ROLE_SP, requester)
sessions = {}  # by the identifier of who was signed in


def made(kind, **members):
    """An element with these members."""
    element = kind()
    for name, value in members.items():
        setattr(element, name, value)
    return element


def attribute_statement(job):
    def value(text):
        node = lasso.MiscTextNode.newWithString(text)
        node.textChild = True
        return made(lasso.Saml2AttributeValue, any=[node])
    return made(lasso.Saml2AttributeStatement, attribute=[
        made(lasso.Saml2Attribute, name=name, attributeValue=list(map(value, values)))
        for name, values in job["attributes"].items()])


def authn(job):
    login = lasso.Login(idp)
    login.processAuthnRequestMsg(job["message"].split("?", 1)[1])
    request = login.request
    read = {"id": request.iD, "issuer": request.issuer.content, "passive": request.isPassive,
            "force": request.forceAuthn, "acs": request.assertionConsumerServiceURL,
            "policy": at(request, "nameIDPolicy.format")}
    if job["outcome"] != "Success":
        try:
            login.validateRequestMsg(False, True)
        except lasso.Error:
            pass  # it says that this is a denial
        login.response.status.statusCode.statusCode.value = STATUS + job["outcome"]
        login.buildAuthnResponseMsg()
        return read, login.msgBody
    login.validateRequestMsg(True, True)
    if "Response" not in job["signed"]:
        login.setSignatureHint(lasso.PROFILE_SIGNATURE_HINT_FORBID)
    login.buildAssertion(lasso.SAML2_AUTHN_CONTEXT_PASSWORD_PROTECTED_TRANSPORT, date(0), None, date(-60), date(600))
    assertion = login.response.assertion[0]
    assertion.authnStatement[0].sessionNotOnOrAfter = date(3600)
    assertion.attributeStatement = [attribute_statement(job)]
    login.buildAuthnResponseMsg()
    # It chooses the subscriber's identifier, and always signs the assertion.
    user = assertion.subject.nameID.content
    sessions[user] = login.session.dump()
    return read, login.msgBody, {"user": user, "signed": [
        each for each in ("Response", "Assertion") if each in job["signed"] + ["Assertion"]]}


def query(job):
    asked = lasso.AssertionQuery(idp)
    asked.setSignatureVerifyHint(lasso.PROFILE_SIGNATURE_VERIFY_HINT_IGNORE)
    asked.processRequestMsg(job["message"])
    asked.validateRequest()
    request = asked.request
    read = {"id": request.iD, "issuer": request.issuer.content, "subject": at(request, "subject.nameID.content")}
    audience = made(lasso.Saml2AudienceRestriction, audience=request.issuer.content)
    confirmation = made(lasso.Saml2SubjectConfirmation, method=lasso.SAML2_CONFIRMATION_METHOD_BEARER,
                        subjectConfirmationData=made(lasso.Saml2SubjectConfirmationData, inResponseTo=request.iD))
    assertion = made(
        lasso.Saml2Assertion, iD=request.iD + "-1", version="2.0", issueInstant=date(0),
        issuer=lasso.Saml2NameID.newWithString(setup["idp"]),
        subject=made(lasso.Saml2Subject, nameID=request.subject.nameID, subjectConfirmation=confirmation),
        conditions=made(lasso.Saml2Conditions, notBefore=date(-60), notOnOrAfter=date(600), audienceRestriction=[audience]))
    if job["kind"] == "attributes":
        read["attributes"] = [each.name for each in request.attribute]
        assertion.attributeStatement = [attribute_statement(job)]
    else:
        read |= {"resource": request.resource, "actions": [request.action.content]}
        assertion.authzDecisionStatement = [made(lasso.Saml2AuthzDecisionStatement, resource=request.resource,
                                                 decision=job["outcome"], action=request.action)]
    asked.response.assertion = [assertion]
    asked.buildResponseMsg()
    return read, asked.msgBody


def logout(job):
    end = lasso.Logout(idp)
    end.setSignatureVerifyHint(lasso.PROFILE_SIGNATURE_VERIFY_HINT_IGNORE)
    end.processRequestMsg(job["message"])
    request = end.request
    read = {"id": request.iD, "issuer": request.issuer.content, "subject": at(request, "nameId.content"),
            "session": [request.sessionIndex]}
    end.setSessionFromDump(sessions[read["subject"]])
    end.validateRequest()
    end.buildResponseMsg()
    return read, end.msgBody


serve({"authn": authn, "attributes": query, "authz": query, "logout": logout})
