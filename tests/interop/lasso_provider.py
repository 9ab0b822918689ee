# Lasso as an identity provider, an attribute authority and a decision point.
import lasso

from provider import STATUS, at, date, serve, setup

idp = lasso.Server("idp.xml", "key.pem", None, "cert.pem")
idp.signatureMethod = lasso.SIGNATURE_METHOD_RSA_SHA256
for requester in ("issuer.xml", "channel.xml"):
    idp.addProvider(lasso.PROVIDER_ROLE_SP, requester)
sessions = {}  # by the identifier of who was signed in


def attribute(name, values):
    made = lasso.Saml2Attribute()
    made.name = name
    made.attributeValue = [lasso.Saml2AttributeValue() for _ in values]
    for value, text in zip(made.attributeValue, values):
        value.any = [lasso.MiscTextNode.newWithString(text)]
        value.any[0].textChild = True
    return made


def attribute_statement(job):
    statement = lasso.Saml2AttributeStatement()
    statement.attribute = [attribute(*each) for each in job["attributes"].items()]
    return statement


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


def respond(job, fill):
    """The response to a query; fill puts the statement into the assertion and says what it read."""
    query, assertion = lasso.AssertionQuery(idp), lasso.Saml2Assertion()
    query.setSignatureVerifyHint(lasso.PROFILE_SIGNATURE_VERIFY_HINT_IGNORE)
    query.processRequestMsg(job["message"])
    query.validateRequest()
    request = query.request
    assertion.iD, assertion.version, assertion.issueInstant = request.iD + "-1", "2.0", date(0)
    assertion.issuer = lasso.Saml2NameID.newWithString(setup["idp"])
    assertion.subject = lasso.Saml2Subject()
    assertion.subject.nameID = request.subject.nameID
    confirmation = assertion.subject.subjectConfirmation = lasso.Saml2SubjectConfirmation()
    confirmation.method = lasso.SAML2_CONFIRMATION_METHOD_BEARER
    confirmation.subjectConfirmationData = lasso.Saml2SubjectConfirmationData()
    confirmation.subjectConfirmationData.inResponseTo = request.iD
    assertion.conditions = lasso.Saml2Conditions()
    assertion.conditions.notBefore, assertion.conditions.notOnOrAfter = date(-60), date(600)
    assertion.conditions.audienceRestriction = [lasso.Saml2AudienceRestriction()]
    assertion.conditions.audienceRestriction[0].audience = request.issuer.content
    read = {"id": request.iD, "issuer": request.issuer.content, "subject": at(request, "subject.nameID.content")}
    read.update(fill(request, assertion))
    query.response.assertion = [assertion]
    query.buildResponseMsg()
    return read, query.msgBody


def attributes(job):
    def fill(request, assertion):
        assertion.attributeStatement = [attribute_statement(job)]
        return {"attributes": [each.name for each in request.attribute]}
    return respond(job, fill)


def authz(job):
    def fill(request, assertion):
        statement = lasso.Saml2AuthzDecisionStatement()
        statement.resource, statement.decision, statement.action = request.resource, job["outcome"], request.action
        assertion.authzDecisionStatement = [statement]
        return {"resource": request.resource, "actions": [request.action.content]}
    return respond(job, fill)


def logout(job):
    end = lasso.Logout(idp)
    end.setSignatureVerifyHint(lasso.PROFILE_SIGNATURE_VERIFY_HINT_IGNORE)
    end.processRequestMsg(job["message"].split("?", 1)[1])
    request = end.request
    read = {"id": request.iD, "issuer": request.issuer.content, "subject": at(request, "nameId.content"),
            "session": [request.sessionIndex]}
    end.setSessionFromDump(sessions[read["subject"]])
    end.validateRequest()
    end.buildResponseMsg()
    return read, end.msgUrl, {"signed": []}  # what is signed is the URL


serve({"authn": authn, "attributes": attributes, "authz": authz, "logout": logout})
