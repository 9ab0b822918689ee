# Lasso as an identity provider, an attribute authority and a decision point.
import lasso

from provider import STATUS, at, date, serve, setup

idp = lasso.Server("idp.xml", "key.pem", None, "cert.pem")
idp.signatureMethod = lasso.SIGNATURE_METHOD_RSA_SHA256
for requester in ("issuer.xml", "channel.xml"):
    idp.addProvider(lasso.PROVIDER_ROLE_SP, requester)
sessions = {}  # of each user who was signed in


def query(job):
    return job["message"].split("?", 1)[1]


def attribute_statement(job):
    statement = lasso.Saml2AttributeStatement()
    attributes = []
    for name, values in job["attributes"].items():
        attribute = lasso.Saml2Attribute()
        attribute.name = name
        texts = []
        for value in values:
            text = lasso.Saml2AttributeValue()
            text.any = [lasso.MiscTextNode.newWithString(value)]
            text.any[0].textChild = True
            texts.append(text)
        attribute.attributeValue = texts
        attributes.append(attribute)
    statement.attribute = attributes
    return statement


def authn(job):
    login = lasso.Login(idp)
    login.processAuthnRequestMsg(query(job))
    request = login.request
    read = {"id": request.iD, "issuer": request.issuer.content, "passive": request.isPassive,
            "force": request.forceAuthn, "acs": request.assertionConsumerServiceURL,
            "policy": at(request, "nameIDPolicy.format")}
    success = job["outcome"] == "Success"
    try:
        login.validateRequestMsg(success, True)
    except lasso.Error:
        if success:
            raise
    if "Response" not in job["signed"]:  # it always signs the assertion
        login.setSignatureHint(lasso.PROFILE_SIGNATURE_HINT_FORBID)
    if success:
        login.buildAssertion(lasso.SAML2_AUTHN_CONTEXT_PASSWORD_PROTECTED_TRANSPORT, date(0), None,
                             date(-60), date(600))
        assertion = login.response.assertion[0]
        assertion.authnStatement[0].sessionNotOnOrAfter = date(3600)
        assertion.attributeStatement = [attribute_statement(job)]
    else:
        login.response.status.statusCode.statusCode.value = STATUS + job["outcome"]
    login.buildAuthnResponseMsg()
    if success:
        # The subscriber's identifier is its choice, and it remembers the session by that.
        user = login.response.assertion[0].subject.nameID.content
        sessions[user] = login.session.dump()
        signed = ["Response", "Assertion"] if "Response" in job["signed"] else ["Assertion"]
        return read, login.msgBody, {"signed": signed, "user": user}
    return read, login.msgBody


def answer(job, fill):
    """The response to a query; fill puts the statement into its assertion."""
    query = lasso.AssertionQuery(idp)
    query.setSignatureVerifyHint(lasso.PROFILE_SIGNATURE_VERIFY_HINT_IGNORE)
    query.processRequestMsg(job["message"])
    query.validateRequest()
    request, assertion = query.request, lasso.Saml2Assertion()
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
    restriction = lasso.Saml2AudienceRestriction()
    restriction.audience = request.issuer.content
    assertion.conditions.audienceRestriction = [restriction]
    read = {"id": request.iD, "issuer": request.issuer.content, "subject": at(request, "subject.nameID.content")}
    read.update(fill(request, assertion))
    query.response.assertion = [assertion]
    query.buildResponseMsg()
    return read, query.msgBody


def attributes(job):
    def fill(request, assertion):
        assertion.attributeStatement = [attribute_statement(job)]
        return {"attributes": [each.name for each in request.attribute]}
    return answer(job, fill)


def authz(job):
    def fill(request, assertion):
        statement = lasso.Saml2AuthzDecisionStatement()
        statement.resource, statement.decision, statement.action = request.resource, job["outcome"], request.action
        assertion.authzDecisionStatement = [statement]
        return {"resource": request.resource, "actions": [request.action.content]}
    return answer(job, fill)


def logout(job):
    logout = lasso.Logout(idp)
    logout.setSignatureVerifyHint(lasso.PROFILE_SIGNATURE_VERIFY_HINT_IGNORE)
    logout.processRequestMsg(query(job))
    request = logout.request
    read = {"id": request.iD, "issuer": request.issuer.content, "subject": at(request, "nameId.content"),
            "session": [request.sessionIndex]}
    logout.setSessionFromDump(sessions[read["subject"]])
    logout.validateRequest()
    logout.buildResponseMsg()
    return read, logout.msgUrl, {"signed": []}  # what is signed is the URL


serve({"authn": authn, "attributes": attributes, "authz": authz, "logout": logout})
